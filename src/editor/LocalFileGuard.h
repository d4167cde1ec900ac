#pragma once

#include <QString>
#include <QWebEngineUrlRequestInterceptor>

#include <functional>

// The editor page may read its own files and the open folder's, nothing else on the disk: a
// picture path leading elsewhere is refused here as well as in the page.
class LocalFileGuard : public QWebEngineUrlRequestInterceptor
{
public:
    // `pageFolder` holds the page's own files; `openFolder` gives the open folder as it is now.
    LocalFileGuard(QString pageFolder, std::function<QString()> openFolder,
                   QObject *parent = nullptr);

    void interceptRequest(QWebEngineUrlRequestInfo &info) override;

    // Whether the file at `path` lies in one of the two folders, links resolved.
    static bool allows(const QString &path, const QString &pageFolder, const QString &openFolder);

private:
    QString m_pageFolder;
    std::function<QString()> m_openFolder;
};
