#include "FileKind.h"

#include <algorithm>

namespace FileKind {

namespace {

// The extension after the last dot; a leading dot starts a hidden name, not an extension.
QStringView extension(QStringView name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot <= 0 ? QStringView() : name.mid(dot + 1);
}

template<typename Extensions> bool hasExtension(QStringView name, const Extensions &extensions)
{
    const QStringView ext = extension(name);
    return std::any_of(std::begin(extensions), std::end(extensions), [ext](QStringView wanted) {
        return ext.compare(wanted, Qt::CaseInsensitive) == 0;
    });
}

constexpr std::array<QStringView, 6> pictureExtensions {u"png", u"jpg",  u"jpeg",
                                                        u"gif", u"webp", u"svg"};

} // namespace

bool isMarkdown(QStringView name)
{
    return hasExtension(name, markdownExtensions);
}

bool isSvgOrDiagram(QStringView name)
{
    return extension(name).compare(u"svg", Qt::CaseInsensitive) == 0
        || name.contains(u".excalidraw");
}

bool isSearched(QStringView name)
{
    return isMarkdown(name) || isSvgOrDiagram(name);
}

bool isPicture(QStringView name)
{
    return hasExtension(name, pictureExtensions);
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
