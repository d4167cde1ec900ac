#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QUrl>

// One Pagewell per user session. The first instance listens on a local socket; a later one hands
// what it was asked to open over that socket and exits, and the first opens it and comes to the
// front. A socket left by a crashed instance is found dead and replaced.
class InstanceChannel : public QObject
{
    Q_OBJECT

public:
    // `name` is the socket's name or path; the default lives in the user's runtime folder.
    explicit InstanceChannel(const QString &name = defaultName(), QObject *parent = nullptr);

    static QString defaultName();

    // Asks a running instance to open `url` (an empty URL only brings it to the front). True
    // when one took the request: this process has nothing more to do.
    bool handOver(const QUrl &url, int timeoutMs = 2000);
    // Becomes the instance that others hand their requests to.
    bool listen();

Q_SIGNALS:
    // Another instance's request; `url` is empty when it only asked to come to the front.
    void openRequested(const QUrl &url);

private:
    void accept();

    QString m_name;
    QLocalServer m_server;
};
