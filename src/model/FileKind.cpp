#include "FileKind.h"

#include <algorithm>

namespace FileKind {

namespace {

bool hasExtension(QStringView name, std::initializer_list<QStringView> extensions)
{
    const QStringView ext = extension(name);
    return std::any_of(extensions.begin(), extensions.end(), [ext](QStringView wanted) {
        return ext.compare(wanted, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

QStringView extension(QStringView name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return {};
    return name.mid(dot + 1);
}

bool isMarkdown(QStringView name)
{
    const QStringView ext = extension(name);
    return std::any_of(
        markdownExtensions.begin(), markdownExtensions.end(),
        [ext](QStringView wanted) { return ext.compare(wanted, Qt::CaseInsensitive) == 0; });
}

bool isSvgOrDiagram(QStringView name)
{
    return hasExtension(name, {u"svg"}) || name.contains(u".excalidraw");
}

bool isSearched(QStringView name)
{
    return isMarkdown(name) || isSvgOrDiagram(name);
}

bool isPicture(QStringView name)
{
    return hasExtension(name, {u"png", u"jpg", u"jpeg", u"gif", u"webp", u"svg"});
}

bool isReadme(QStringView name)
{
    return name.compare(u"readme.md", Qt::CaseInsensitive) == 0;
}

QString withoutMarkdownExtension(const QString &name)
{
    return isMarkdown(name) ? name.left(name.lastIndexOf(u'.')) : name;
}

} // namespace FileKind
