#include "LinkRewriter.h"

#include "model/FileKind.h"
#include "services/MarkdownLinks.h"

#include <QDir>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace LinkRewriter {

namespace {

QString fileName(const QString &path)
{
    return path.section(u'/', -1);
}

bool hasMarkdownExtension(const QString &name)
{
    return FileKind::withoutMarkdownExtension(name).size() != name.size();
}

// The names of the tree once the item moved, for the wiki links written after it: the files
// named `name` and where they are then.
class NamesAfter
{
public:
    NamesAfter(const LinkResolver::NameIndex &before, const Move &move)
        : m_before(before), m_move(move)
    { }

    QStringList named(const QString &name) const
    {
        QStringList paths;
        for (const FileItem *file : m_before.named(name)) {
            const QString after = m_move.apply(file->id());
            if (fileName(after).compare(name, Qt::CaseInsensitive) == 0)
                paths.append(after);
        }
        if (!m_move.isFolder && fileName(m_move.to).compare(name, Qt::CaseInsensitive) == 0
            && !paths.contains(m_move.to))
            paths.append(m_move.to);
        return paths;
    }

    // Where `[[written]]` leads from `fromPath` once the item moved.
    QString resolve(const QString &written, const QString &fromPath, bool picture) const
    {
        const QString base = written.section(u'/', -1);
        QStringList candidates;
        if (picture) {
            candidates = named(base);
        } else {
            const QString stem = FileKind::withoutMarkdownExtension(base);
            for (const QStringView extension : FileKind::markdownExtensions)
                candidates += named(stem + u'.' + extension);
        }
        const QString name = picture ? written : FileKind::withoutMarkdownExtension(written);
        const qsizetype best = LinkResolver::nearestPath(candidates, name, fromPath, !picture);
        return best < 0 ? QString() : candidates[best];
    }

private:
    const LinkResolver::NameIndex &m_before;
    const Move &m_move;
};

// The name part of a wiki link's inside, "guide/Nom" in "guide/Nom#Titre|alias".
qsizetype wikiNameLength(const QString &inner)
{
    qsizetype end = inner.size();
    for (const QChar stop : {u'#', u'|'}) {
        const qsizetype at = inner.indexOf(stop);
        if (at >= 0 && at < end)
            end = at;
    }
    return end;
}

QString rewriteWiki(const QString &inner, const QString &target, const QString &fromPath,
                    bool picture, const QString &rootPath, const NamesAfter &after)
{
    const qsizetype nameLength = wikiNameLength(inner);
    const QString written = inner.left(nameLength);
    const QString trimmed = written.trimmed();
    const bool withExtension = picture || hasMarkdownExtension(trimmed);
    if (after.resolve(trimmed, fromPath, picture) == target
        && fileName(trimmed).compare(withExtension
                                         ? fileName(target)
                                         : FileKind::withoutMarkdownExtension(fileName(target)),
                                     Qt::CaseInsensitive)
            == 0)
        return inner;
    // The fewest folders that lead to the right file, starting from as many as were written.
    const QStringList segments = target.mid(rootPath.size() + 1).split(u'/');
    for (qsizetype count = trimmed.count(u'/') + 1; count <= segments.size(); ++count) {
        QString name = segments.mid(segments.size() - count).join(u'/');
        if (!withExtension)
            name = FileKind::withoutMarkdownExtension(name);
        if (after.resolve(name, fromPath, picture) == target)
            return name + inner.mid(nameLength);
    }
    return inner;
}

// Encodes what a path written without "<...>" cannot hold as it is, the way `encoded` says.
QString encodePath(const QString &path, bool encoded)
{
    if (encoded)
        return QString::fromUtf8(QUrl::toPercentEncoding(path, "/!$&'()*+,;=:@~"));
    return QString(path).replace(u' ', u"%20"_s);
}

QString rewritePath(const QString &written, const QString &target, const QString &newTarget,
                    const QString &newFromPath, const QString &rootPath, MarkdownLinks::Form form)
{
    QString inner = written;
    const bool angled = inner.startsWith(u'<') && inner.endsWith(u'>');
    if (angled)
        inner = inner.mid(1, inner.size() - 2);
    QString scheme;
    if (inner.startsWith(u"file://"_s, Qt::CaseInsensitive)) {
        scheme = inner.left(7);
        inner = inner.mid(7);
    }
    qsizetype cut = inner.size();
    for (const QChar stop : {u'#', u'?'}) {
        const qsizetype at = inner.indexOf(stop);
        if (at >= 0 && at < cut)
            cut = at;
    }
    const QString suffix = inner.mid(cut);
    const QString pathWritten = inner.left(cut);
    const bool encoded = pathWritten.contains(u'%');
    const QString path = QUrl::fromPercentEncoding(pathWritten.toUtf8());
    const bool trailingSlash = path.endsWith(u'/') && path.size() > 1;

    const bool absolute = path.startsWith(u'/') || !scheme.isEmpty();
    // An absolute path to an item that stayed still holds, wherever the document went.
    if (absolute && newTarget == target)
        return written;
    QString result;
    if (absolute) {
        // Absolute inside the folder, or from the folder's root.
        const bool full
            = QDir::cleanPath(path) == target || QDir::cleanPath(path).startsWith(rootPath + u'/');
        result = full ? newTarget : newTarget.mid(rootPath.size());
    } else {
        result = QDir(newFromPath.section(u'/', 0, -2)).relativeFilePath(newTarget);
        if (path.startsWith(u"./"_s) && !result.startsWith(u"../"_s))
            result.prepend(u"./"_s);
    }
    // Written without its extension, it stays so.
    if (hasMarkdownExtension(fileName(target))
        && !hasMarkdownExtension(fileName(QDir::cleanPath(path))))
        result = FileKind::withoutMarkdownExtension(result);
    if (trailingSlash)
        result += u'/';
    if (!angled && form != MarkdownLinks::Form::Html)
        result = encodePath(result, encoded);
    else if (encoded)
        result = encodePath(result, true);
    result = scheme + result + suffix;
    return angled ? u'<' + result + u'>' : result;
}

} // namespace

QString Move::apply(const QString &path) const
{
    if (path == from)
        return to;
    if (path.startsWith(from) && path.size() > from.size() && path[from.size()] == u'/')
        return to + path.mid(from.size());
    return path;
}

Result rewrite(const QString &text, const QString &documentPath, const Move &move,
               const FileItem &root, const LinkResolver::NameIndex &names)
{
    const QString newDocumentPath = move.apply(documentPath);
    const NamesAfter after(names, move);
    Result result;
    qsizetype copied = 0;
    for (const MarkdownLinks::Span &span : MarkdownLinks::scan(text)) {
        const QString written = text.mid(span.start, span.length);
        const std::optional<QString> target = LinkResolver::resolveSpan(
            written, span.form, span.picture, documentPath, root, &names);
        if (!target)
            continue;
        const QString newTarget = move.apply(*target);
        if (newTarget == *target && newDocumentPath == documentPath)
            continue;
        const QString rewritten = span.form == MarkdownLinks::Form::Wiki
            ? rewriteWiki(written, newTarget, newDocumentPath, span.picture, root.id(), after)
            : rewritePath(written, *target, newTarget, newDocumentPath, root.id(), span.form);
        if (rewritten == written)
            continue;
        result.text += QStringView(text).mid(copied, span.start - copied);
        result.text += rewritten;
        copied = span.start + span.length;
        ++result.links;
    }
    if (result.links == 0) {
        result.text = text;
        return result;
    }
    result.text += QStringView(text).mid(copied);
    return result;
}

} // namespace LinkRewriter
