#include "LinkResolver.h"

#include <QDir>
#include <QRegularExpression>
#include <QUrl>

#include <limits>

using namespace Qt::StringLiterals;

namespace LinkResolver {

namespace {

bool isDocument(const FileItem *node)
{
    return node && !node->isDirectory() && node->isMarkdown();
}

QString withoutExtension(const QString &name)
{
    static const QRegularExpression extension(u"\\.(md|markdown|mdown)$"_s,
                                              QRegularExpression::CaseInsensitiveOption);
    return QString(name).remove(extension);
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

void collectNamed(const FileItem &folder, const QString &name, QList<const FileItem *> &out)
{
    for (const FileItem &child : folder.children()) {
        if (child.isDirectory())
            collectNamed(child, name, out);
        else if (child.name().startsWith(name, Qt::CaseInsensitive) && child.isMarkdown()
                 && withoutExtension(child.name()).compare(name, Qt::CaseInsensitive) == 0)
            out.append(&child);
    }
}

std::optional<Target> resolveWiki(QString inner, const QString &fromPath, const FileItem &root)
{
    inner = inner.section(u'|', 0, 0);
    const QString fragment = inner.section(u'#', 1);
    const QString name = withoutExtension(inner.section(u'#', 0, 0).trimmed());
    if (name.isEmpty())
        return Target {fromPath, fragment};
    QList<const FileItem *> named;
    collectNamed(root, name.section(u'/', -1), named);
    const QString here = fromPath.section(u'/', 0, -2);
    const FileItem *best = nullptr;
    int bestDistance = std::numeric_limits<int>::max();
    for (const FileItem *candidate : named) {
        // A name with folders, [[guide/install]], must end the candidate's path.
        if (name.contains(u'/')
            && !withoutExtension(candidate->id()).endsWith(u'/' + name, Qt::CaseInsensitive))
            continue;
        const int d = distance(here, candidate->id().section(u'/', 0, -2));
        if (!best || d < bestDistance
            || (d == bestDistance
                && (candidate->id().size() < best->id().size()
                    || (candidate->id().size() == best->id().size()
                        && candidate->id() < best->id())))) {
            best = candidate;
            bestDistance = d;
        }
    }
    if (!best)
        return std::nullopt;
    return Target {best->id(), fragment};
}

} // namespace

std::optional<Target> resolve(const QString &target, const QString &fromPath, const FileItem &root)
{
    QString written = target.trimmed();
    if (written.startsWith(u"[["_s) && written.endsWith(u"]]"_s))
        return resolveWiki(written.mid(2, written.size() - 4), fromPath, root);
    if (written.startsWith(u'<') && written.endsWith(u'>'))
        written = written.mid(1, written.size() - 2);
    // A scheme ("https:", "mailto:") is a web address, not a document; "file:" is a path.
    static const QRegularExpression scheme(u"^[A-Za-z][A-Za-z0-9+.-]*:"_s);
    if (written.startsWith(u"file:"_s, Qt::CaseInsensitive))
        written = QUrl(written).path();
    else if (scheme.match(written).hasMatch())
        return std::nullopt;

    const qsizetype hash = written.indexOf(u'#');
    const QString fragment
        = hash < 0 ? QString() : QUrl::fromPercentEncoding(written.mid(hash + 1).toUtf8());
    QString path = written.left(hash < 0 ? written.size() : hash);
    path = path.left(path.indexOf(u'?') < 0 ? path.size() : path.indexOf(u'?'));
    path = QUrl::fromPercentEncoding(path.toUtf8());
    if (path.isEmpty())
        return Target {fromPath, fragment};

    QStringList candidates;
    const QString folder = fromPath.section(u'/', 0, -2);
    if (path.startsWith(u'/')) {
        // An absolute path inside the folder, else a path from the folder's root.
        candidates.append(QDir::cleanPath(path));
        candidates.append(QDir::cleanPath(root.id() + path));
    } else {
        candidates.append(QDir::cleanPath(folder + u'/' + path));
    }
    for (const QString &candidate : std::as_const(candidates)) {
        for (const char16_t *extension : {u"", u".md", u".markdown", u".mdown"}) {
            const QString file = candidate + QStringView(extension);
            if (isDocument(root.descendant(file)))
                return Target {file, fragment};
        }
    }
    return std::nullopt;
}

} // namespace LinkResolver
