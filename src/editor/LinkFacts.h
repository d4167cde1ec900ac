#pragma once

#include "services/LatestRun.h"
#include "workspace/WorkspaceStore.h"

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QTimer>

// What the page cannot know by itself about the open document's links and pictures, since only
// the host knows the folder: which link targets lead nowhere, and where each picture is and how
// large it is. The page marks the first, and gives the second its box before it loads. Worked out
// on a worker thread from the store's text and tree, a moment after typing stops, and sent only
// when it changed.
class LinkFacts : public QObject
{
    Q_OBJECT

public:
    explicit LinkFacts(QObject *parent = nullptr);

    void setStore(WorkspaceStore *store);
    // The page has loaded, or lost what it was told: everything is sent again. Nothing is worked
    // out before the first call, while the page could not take it.
    void resend();

    // The facts of `text`, as the page takes them: {"missing": [target, ...], "pictures":
    // {source: {"path": ..., "width": ..., "height": ...} or null when there is no such file}}.
    static QJsonObject compute(const QString &text, const QString &documentPath,
                               const FileItem &root);

Q_SIGNALS:
    // New facts about the document at `documentPath`.
    void factsChanged(const QJsonObject &facts, const QString &documentPath);

private:
    void schedule(int delayMs);
    // Facts worked out from an older text or tree are stale: they are dropped and worked out
    // again at once.
    void restart();
    void start();
    void publish(const QString &documentPath, const QJsonObject &facts);

    QPointer<WorkspaceStore> m_store;
    QTimer m_timer;
    LatestRun<QJsonObject> m_run {this};
    QString m_sentPath;
    QJsonObject m_sent;
    bool m_pageReady = false;
};
