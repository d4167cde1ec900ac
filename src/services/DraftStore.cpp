#include "DraftStore.h"

#include "TextFile.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

QByteArray sha1Hex(QByteArrayView bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
}

struct DraftFile
{
    QJsonObject header;
    QByteArray text;
};

std::optional<DraftFile> readDraft(const QString &path, qint64 headerOnlyLimit = -1)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = headerOnlyLimit < 0 ? file.readAll() : file.read(headerOnlyLimit);
    const qsizetype end = bytes.indexOf('\n');
    if (end < 0)
        return std::nullopt;
    const QJsonDocument header = QJsonDocument::fromJson(bytes.left(end));
    if (!header.isObject())
        return std::nullopt;
    return DraftFile {header.object(), headerOnlyLimit < 0 ? bytes.mid(end + 1) : QByteArray()};
}

} // namespace

DraftStore::DraftStore(const QString &folder) : m_folder(folder)
{
    m_writer.setMaxThreadCount(1);
}

DraftStore::~DraftStore()
{
    m_writer.waitForDone();
}

QString DraftStore::defaultFolder()
{
    // Qt 6.4 has no GenericStateLocation.
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() || !QDir::isAbsolutePath(state))
        state = QDir::homePath() + u"/.local/state"_s;
    return state + u"/pagewell/drafts"_s;
}

QString DraftStore::draftPath(const QString &documentPath) const
{
    return m_folder + u'/' + QString::fromLatin1(sha1Hex(documentPath.toUtf8())) + u".draft"_s;
}

void DraftStore::save(const QString &documentPath, const QString &baseText, const QString &text)
{
    schedule(documentPath, {false, baseText, text});
}

void DraftStore::remove(const QString &documentPath)
{
    schedule(documentPath, {true, {}, {}});
}

void DraftStore::schedule(const QString &documentPath, Operation operation)
{
    QMutexLocker lock(&m_mutex);
    const bool queued = m_waiting.contains(documentPath);
    m_waiting.insert(documentPath, std::move(operation));
    lock.unlock();
    // A wish still waiting is simply replaced: the writer takes the newest one.
    if (!queued)
        m_writer.start([this, documentPath] { perform(documentPath); });
}

void DraftStore::perform(const QString &documentPath)
{
    QMutexLocker lock(&m_mutex);
    const auto waiting = m_waiting.find(documentPath);
    if (waiting == m_waiting.end())
        return;
    const Operation operation = waiting.value();
    m_waiting.erase(waiting);
    m_underWay.insert(documentPath, operation);
    lock.unlock();

    write(documentPath, operation);

    lock.relock();
    m_underWay.remove(documentPath);
}

void DraftStore::write(const QString &documentPath, const Operation &operation) const
{
    const QString path = draftPath(documentPath);
    if (operation.remove) {
        QFile::remove(path);
        return;
    }
    const QByteArray base = operation.baseText.toUtf8();
    const QJsonObject header {
        {u"path"_s, documentPath},
        {u"baseSize"_s, base.size()},
        {u"baseSha1"_s, QString::fromLatin1(sha1Hex(base))},
        {u"written"_s, QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
    };
    QByteArray bytes = QJsonDocument(header).toJson(QJsonDocument::Compact);
    bytes += '\n';
    bytes += operation.text.toUtf8();
    QDir().mkpath(m_folder);
    // Only the user reads their drafts.
    QFile::setPermissions(m_folder,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (const std::optional<FileError> error = TextFile::writeAtomically(path, bytes))
        qWarning("Pagewell: the recovery draft of %s could not be written: %s",
                 qPrintable(documentPath), qPrintable(error->localizedDescription()));
}

std::optional<QString> DraftStore::find(const QString &documentPath, const QString &fileText) const
{
    {
        QMutexLocker lock(&m_mutex);
        // The newest wish first: it is what the disk will hold.
        for (const QHash<QString, Operation> *pending : {&m_waiting, &m_underWay}) {
            const auto found = pending->constFind(documentPath);
            if (found == pending->cend())
                continue;
            if (found->remove || found->baseText != fileText || found->text == fileText)
                return std::nullopt;
            return found->text;
        }
    }
    const std::optional<DraftFile> draft = readDraft(draftPath(documentPath));
    if (!draft || draft->header.value(u"path"_s).toString() != documentPath)
        return std::nullopt;
    // Sizes first: a file that changed size is another file, without hashing megabytes.
    const QByteArray base = fileText.toUtf8();
    if (draft->header.value(u"baseSize"_s).toInteger(-1) != base.size()
        || draft->header.value(u"baseSha1"_s).toString().toLatin1() != sha1Hex(base)
        || draft->text == base)
        return std::nullopt;
    return TextFile::decodeUtf8(draft->text);
}

void DraftStore::removeStale(std::chrono::seconds age)
{
    m_writer.start([folder = m_folder, age] {
        const QDateTime oldest = QDateTime::currentDateTimeUtc().addSecs(-age.count());
        const QFileInfoList drafts = QDir(folder).entryInfoList({u"*.draft"_s}, QDir::Files);
        for (const QFileInfo &info : drafts) {
            bool stale = info.lastModified().toUTC() < oldest;
            if (!stale) {
                // The header is the first line; documents' paths are short.
                const std::optional<DraftFile> draft = readDraft(info.filePath(), 64 * 1024);
                stale = !draft || !QFileInfo::exists(draft->header.value(u"path"_s).toString());
            }
            if (stale)
                QFile::remove(info.filePath());
        }
    });
}

void DraftStore::waitForWrites()
{
    m_writer.waitForDone();
}
