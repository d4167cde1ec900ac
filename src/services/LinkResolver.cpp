#include "LinkResolver.h"

#include "model/FileKind.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>

#include <limits>

using namespace Qt::StringLiterals;

namespace LinkResolver {

namespace {

bool isDocument(const FileItem *node)
{
    return node && !node->isDirectory() && node->isMarkdown();
}

// Folders up from `from` and down to `to` between two folders.
int distance(const QString &from, const QString &to)
{
    const QList<QStringView> a = QStringView(from).split(u'/');
    const QList<QStringView> b = QStringView(to).split(u'/');
    qsizetype common = 0;
    while (common < a.size() && common < b.size() && a[common] == b[common])
        ++common;
    return int(a.size() - common + b.size() - common);
}

bool isPictureName(const QString &path)
{
    return FileKind::isPicture(QStringView(path).mid(path.lastIndexOf(u'/') + 1));
}

// The files below `folder` that `matches` accepts.
template<typename Matches>
void collect(const FileItem &folder, const Matches &matches, QList<const FileItem *> &out)
{
    for (const FileItem &child : folder.children()) {
        if (child.isDirectory())
            collect(child, matches, out);
        else if (matches(child))
            out.append(&child);
    }
}

const FileItem *nearest(const QList<const FileItem *> &named, const QString &written,
                        const QString &fromPath, bool dropExtension)
{
    QStringList paths;
    paths.reserve(named.size());
    for (const FileItem *file : named)
        paths.append(file->id());
    const qsizetype best = nearestPath(paths, written, fromPath, dropExtension);
    return best < 0 ? nullptr : named[best];
}

std::optional<Target> resolveWiki(QString inner, const QString &fromPath, const FileItem &root,
                                  const NameIndex *names)
{
    inner = inner.section(u'|', 0, 0);
    const QString fragment = inner.section(u'#', 1);
    const QString name = FileKind::withoutMarkdownExtension(inner.section(u'#', 0, 0).trimmed());
    if (name.isEmpty())
        return Target {fromPath, fragment};
    const QString base = name.section(u'/', -1);
    QList<const FileItem *> named;
    if (names) {
        for (const QStringView extension : FileKind::markdownExtensions)
            named += names->named(base + u'.' + extension);
    } else {
        collect(
            root,
            [&base](const FileItem &file) {
                return file.name().startsWith(base, Qt::CaseInsensitive) && file.isMarkdown()
                    && FileKind::withoutMarkdownExtension(file.name())
                           .compare(base, Qt::CaseInsensitive)
                    == 0;
            },
            named);
    }
    const FileItem *best = nearest(named, name, fromPath, true);
    if (!best)
        return std::nullopt;
    return Target {best->id(), fragment};
}

// A path as written in a link or a picture: without <...>, "file:", query and fragment, decoded.
// Nothing for a web address.
std::optional<QString> writtenPath(QString written, QString *fragment = nullptr)
{
    if (written.startsWith(u'<') && written.endsWith(u'>'))
        written = written.mid(1, written.size() - 2);
    if (written.startsWith(u"file:"_s, Qt::CaseInsensitive))
        written = QUrl(written).path();
    else if (isWebAddress(written))
        return std::nullopt;
    const qsizetype hash = written.indexOf(u'#');
    if (fragment)
        *fragment
            = hash < 0 ? QString() : QUrl::fromPercentEncoding(written.mid(hash + 1).toUtf8());
    QString path = written.left(hash < 0 ? written.size() : hash);
    path = path.left(path.indexOf(u'?') < 0 ? path.size() : path.indexOf(u'?'));
    return QUrl::fromPercentEncoding(path.toUtf8());
}

// The entry a decoded path names from the document at `fromPath`, when `accepts` takes it: the
// path as it is, else a document with a Markdown extension added. An absolute path is looked for
// inside the folder, else from the folder's root.
template<typename Accepts>
std::optional<QString> entryAt(const QString &path, const QString &fromPath, const FileItem &root,
                               const Accepts &accepts)
{
    QStringList candidates;
    if (path.startsWith(u'/')) {
        candidates.append(QDir::cleanPath(path));
        candidates.append(QDir::cleanPath(root.id() + path));
    } else {
        candidates.append(QDir::cleanPath(fromPath.section(u'/', 0, -2) + u'/' + path));
    }
    for (const QString &candidate : std::as_const(candidates)) {
        const FileItem *entry = candidate == root.id() ? nullptr : root.descendant(candidate);
        if (entry && accepts(entry))
            return candidate;
        for (const QStringView extension : FileKind::markdownExtensions) {
            const QString file = candidate + u'.' + extension;
            if (isDocument(root.descendant(file)))
                return file;
        }
    }
    return std::nullopt;
}

} // namespace

NameIndex::NameIndex(const FileItem &root)
{
    QList<const FileItem *> files;
    collect(
        root, [](const FileItem &) { return true; }, files);
    for (const FileItem *file : std::as_const(files))
        m_files[file->name().toCaseFolded()].append(file);
}

QList<const FileItem *> NameIndex::named(const QString &name) const
{
    return m_files.value(name.toCaseFolded());
}

bool isWebAddress(const QString &target)
{
    static const QRegularExpression scheme(u"^<?[A-Za-z][A-Za-z0-9+.-]*:"_s);
    const QStringView text = QStringView(target).mid(target.startsWith(u'<'));
    return scheme.match(target).hasMatch() && !text.startsWith(u"file:"_s, Qt::CaseInsensitive)
        && !text.startsWith(u"javascript:"_s, Qt::CaseInsensitive);
}

qsizetype nearestPath(const QStringList &paths, const QString &written, const QString &fromPath,
                      bool dropExtension)
{
    const QString here = fromPath.section(u'/', 0, -2);
    qsizetype best = -1;
    int bestDistance = std::numeric_limits<int>::max();
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString &candidate = paths[i];
        const QString path
            = dropExtension ? FileKind::withoutMarkdownExtension(candidate) : candidate;
        if (written.contains(u'/') && !path.endsWith(u'/' + written, Qt::CaseInsensitive))
            continue;
        const int d = distance(here, candidate.section(u'/', 0, -2));
        if (best < 0 || d < bestDistance
            || (d == bestDistance
                && (candidate.size() < paths[best].size()
                    || (candidate.size() == paths[best].size() && candidate < paths[best])))) {
            best = i;
            bestDistance = d;
        }
    }
    return best;
}

std::optional<QString> resolveSpan(const QString &written, MarkdownLinks::Form form, bool picture,
                                   const QString &fromPath, const FileItem &root,
                                   const NameIndex *names)
{
    if (form == MarkdownLinks::Form::Wiki) {
        const QString wiki = u"[["_s + written + u"]]"_s;
        if (picture)
            return resolvePicture(wiki, fromPath, root, names);
        const std::optional<Target> target = resolve(wiki, fromPath, root, names);
        if (!target || written.section(u'|', 0, 0).section(u'#', 0, 0).trimmed().isEmpty())
            return std::nullopt;
        return target->path;
    }
    const std::optional<QString> path = writtenPath(written.trimmed());
    if (!path || path->isEmpty())
        return std::nullopt;
    return entryAt(*path, fromPath, root, [](const FileItem *) { return true; });
}

std::optional<Target> resolve(const QString &target, const QString &fromPath, const FileItem &root,
                              const NameIndex *names)
{
    const QString written = target.trimmed();
    if (written.startsWith(u"[["_s) && written.endsWith(u"]]"_s))
        return resolveWiki(written.mid(2, written.size() - 4), fromPath, root, names);
    QString fragment;
    const std::optional<QString> path = writtenPath(written, &fragment);
    if (!path)
        return std::nullopt;
    if (path->isEmpty())
        return Target {fromPath, fragment};

    const std::optional<QString> file = entryAt(*path, fromPath, root, isDocument);
    return file ? std::optional(Target {*file, fragment}) : std::nullopt;
}

std::optional<QString> resolvePicture(const QString &source, const QString &fromPath,
                                      const FileItem &root, const NameIndex *names)
{
    const auto isPicture = [](const FileItem *node) {
        return node && !node->isDirectory() && isPictureName(node->name());
    };
    const QString written = source.trimmed();
    if (written.startsWith(u"[["_s) && written.endsWith(u"]]"_s)) {
        const QString name = written.mid(2, written.size() - 4).section(u'|', 0, 0).trimmed();
        // A path first, as a picture line with that path would show; else the file by its name.
        const QString beside = QDir::cleanPath(fromPath.section(u'/', 0, -2) + u'/' + name);
        if (beside.startsWith(root.id() + u'/') && isPicture(root.descendant(beside)))
            return beside;
        const QString base = name.section(u'/', -1);
        QList<const FileItem *> named;
        if (names)
            named = names->named(base);
        else
            collect(
                root,
                [&base](const FileItem &file) {
                    return file.name().compare(base, Qt::CaseInsensitive) == 0;
                },
                named);
        named.removeIf([&](const FileItem *file) { return !isPicture(file); });
        const FileItem *best = nearest(named, name, fromPath, false);
        return best ? std::optional(best->id()) : std::nullopt;
    }
    const std::optional<QString> path = writtenPath(written);
    if (!path || path->isEmpty())
        return std::nullopt;
    // An absolute path outside the folder is read from the folder's root, as the page does.
    QString full = *path;
    if (!full.startsWith(u'/'))
        full = fromPath.section(u'/', 0, -2) + u'/' + full;
    else if (!full.startsWith(root.id() + u'/'))
        full = root.id() + full;
    full = QDir::cleanPath(full);
    if (!full.startsWith(root.id() + u'/') || !isPicture(root.descendant(full)))
        return std::nullopt;
    return full;
}

Written writtenIn(const QString &text)
{
    // The page's picture lines (pictures.js), read alike: its facts are looked up by these
    // sources as written.
    static const QRegularExpression markdownPicture(
        uR"re(^ {0,3}!\[[^\]]*\]\(\s*(<[^>\n]*>|[^\s)]+)(?:\s+(?:"[^"]*"|'[^']*'))?\s*\)\s*$)re"_s);
    static const QRegularExpression wikiPicture(
        uR"re(^ {0,3}!\[\[([^\]|\n]+)(?:\|[^\]\n]*)?\]\]\s*$)re"_s);
    static const QRegularExpression htmlPicture(
        uR"re(^ {0,3}<img\b[^>]*?\bsrc\s*=\s*(?:"([^"]*)"|'([^']*)')[^>]*>\s*$)re"_s,
        QRegularExpression::CaseInsensitiveOption);

    Written written;
    QSet<QString> seenLinks;
    QSet<QString> seenPictures;
    const auto add = [](QStringList &list, QSet<QString> &seen, const QString &value) {
        if (!seen.contains(value)) {
            seen.insert(value);
            list.append(value);
        }
    };
    // Links where the folder's reading finds them (nothing inside code); a picture is no link,
    // and neither is a link to a picture file.
    for (const MarkdownLinks::Span &span : MarkdownLinks::scan(text)) {
        if (span.picture || span.form == MarkdownLinks::Form::Html)
            continue;
        const QString target = text.mid(span.start, span.length);
        if (span.form == MarkdownLinks::Form::Wiki)
            add(written.links, seenLinks, u"[["_s + target + u"]]"_s);
        else if (!isPictureName(writtenPath(target).value_or(QString())))
            add(written.links, seenLinks, target);
    }
    for (const QStringView line : QStringView(text).tokenize(u'\n')) {
        const QStringView trimmed = line.trimmed();
        if (!trimmed.startsWith(u'!') && !trimmed.startsWith(u'<'))
            continue;
        QRegularExpressionMatch match;
        if ((match = markdownPicture.match(line)).hasMatch()) {
            QString source = match.captured(1);
            if (source.startsWith(u'<') && source.endsWith(u'>'))
                source = source.mid(1, source.size() - 2);
            add(written.pictures, seenPictures, source);
        } else if ((match = wikiPicture.match(line)).hasMatch()) {
            add(written.pictures, seenPictures, u"[["_s + match.captured(1).trimmed() + u"]]"_s);
        } else if ((match = htmlPicture.match(line)).hasMatch()) {
            add(written.pictures, seenPictures,
                match.hasCaptured(1) ? match.captured(1) : match.captured(2));
        }
    }
    return written;
}

} // namespace LinkResolver
