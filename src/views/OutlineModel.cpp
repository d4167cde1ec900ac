#include "OutlineModel.h"

#include "workspace/StoreBinding.h"

#include <QLocale>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

QString OutlineModel::mediumDateTime(const QDateTime &dateTime, const QLocale &locale)
{
    // The locale's long date without the weekday and with short month names ("21 nov. 2026",
    // "Nov 21, 2026"), then its short time.
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.replace(QRegularExpression(u"d{4}[,.]?\\s*"_s), QString());
    format.replace(u"MMMM"_s, u"MMM"_s);
    return locale.toString(dateTime.date(), format.trimmed()) + u" "_s
        + locale.toString(dateTime.time(), QLocale::ShortFormat);
}

OutlineModel::OutlineModel(QObject *parent) : QAbstractListModel(parent) { }

void OutlineModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store) {
        // The list follows the headings; the facts follow the document, its saves and its file.
        // Typing changes neither.
        connect(store, &WorkspaceStore::documentHeadingsChanged, this,
                &OutlineModel::updateHeadings);
        connect(store, &WorkspaceStore::documentReplaced, this, &OutlineModel::updateFacts);
        connect(store, &WorkspaceStore::documentModifiedChanged, this, &OutlineModel::updateFacts);
        connect(store, &WorkspaceStore::documentFileChanged, this, &OutlineModel::updateFacts);
    }
    updateHeadings();
    updateFacts();
    Q_EMIT storeChanged();
}

QString OutlineModel::indentation(int level)
{
    return QString(std::max(0, (level - 1) * 2), u' ');
}

QString OutlineModel::tag(int level)
{
    return u"H"_s + QString::number(level);
}

void OutlineModel::updateHeadings()
{
    const std::optional<EditorDocument> &document
        = m_store ? m_store->currentDocument() : std::nullopt;
    beginResetModel();
    m_headings = document ? document->headings : QList<HeadingItem>();
    endResetModel();
    Q_EMIT headingsChanged();
}

void OutlineModel::updateFacts()
{
    const std::optional<EditorDocument> &document
        = m_store ? m_store->currentDocument() : std::nullopt;
    const QDateTime lastModified = document ? document->lastModified : QDateTime();
    m_hasDocument = document.has_value();
    m_sizeText = document ? u"Taille : "_s + document->formattedFileSize() : QString();
    m_modifiedText = document ? u"Modifié le : "_s + mediumDateTime(lastModified) : QString();
    Q_EMIT documentChanged();
}

int OutlineModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_headings.size());
}

QVariant OutlineModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const HeadingItem &heading = m_headings.at(index.row());
    switch (role) {
    case HeadingIdRole:
        return heading.id;
    case Qt::DisplayRole:
    case TextRole:
        return heading.text;
    case LevelRole:
        return heading.level;
    case TagRole:
        return tag(heading.level);
    case IndentationRole:
        return indentation(heading.level);
    default:
        return {};
    }
}

QHash<int, QByteArray> OutlineModel::roleNames() const
{
    return {{HeadingIdRole, "headingId"},
            {TextRole, "headingText"},
            {LevelRole, "level"},
            {TagRole, "tag"},
            {IndentationRole, "indentation"}};
}

void OutlineModel::scrollTo(int row)
{
    if (m_store && row >= 0 && row < count())
        m_store->requestHeadingScroll(m_headings.at(row).id);
}
