#include "LocalFileGuard.h"

#include <QFileInfo>
#include <QUrl>

LocalFileGuard::LocalFileGuard(QString pageFolder, std::function<QString()> openFolder,
                               QObject *parent)
    : QWebEngineUrlRequestInterceptor(parent),
      m_pageFolder(std::move(pageFolder)),
      m_openFolder(std::move(openFolder))
{ }

void LocalFileGuard::interceptRequest(QWebEngineUrlRequestInfo &info)
{
    // Other addresses are the page's settings' business: it reaches nothing remote.
    const QUrl url = info.requestUrl();
    if (url.isLocalFile() && !allows(url.toLocalFile(), m_pageFolder, m_openFolder()))
        info.block(true);
}

bool LocalFileGuard::allows(const QString &path, const QString &pageFolder,
                            const QString &openFolder)
{
    // A link inside the folder may lead out of it: both sides are compared as they really are.
    const QString file = QFileInfo(path).canonicalFilePath();
    if (file.isEmpty())
        return false;
    for (const QString &folder : {pageFolder, openFolder}) {
        const QString real = folder.isEmpty() ? QString() : QFileInfo(folder).canonicalFilePath();
        if (!real.isEmpty() && (file == real || file.startsWith(real + u'/')))
            return true;
    }
    return false;
}
