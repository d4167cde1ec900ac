#include "EditorScripts.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace EditorScripts {

// One pass over the text, appended to `out`: documents run to megabytes, and four replace passes
// cost a quarter of a second on a 10 MB one.
static void appendTemplateLiteral(QString &out, QStringView text)
{
    out += u'`';
    const QChar *run = text.constData();
    const QChar *const end = run + text.size();
    for (const QChar *c = run; c != end; ++c) {
        const char16_t unit = c->unicode();
        // A template literal turns a raw CR LF or CR into LF: a CRLF document would reach the
        // page, and come back to the disk, with its line ends changed. Written as an escape, CR
        // stays.
        if (unit != u'\\' && unit != u'`' && unit != u'$' && unit != u'\r')
            continue;
        out.append(run, c - run);
        out += u'\\';
        out += unit == u'\r' ? QChar(u'r') : *c;
        run = c + 1;
    }
    out.append(run, end - run);
    out += u'`';
}

QString templateLiteral(QStringView text)
{
    QString encoded;
    encoded.reserve(text.size() + text.size() / 16 + 2);
    appendTemplateLiteral(encoded, text);
    return encoded;
}

// The longest literal of a document's text, in UTF-16 units.
constexpr qsizetype piece = 4'096;

// Written into `out`, which the caller has room in.
static void appendTemplateLiteralPieces(QString &out, QStringView text)
{
    qsizetype at = 0;
    do {
        qsizetype length = std::min(piece, text.size() - at);
        // A surrogate pair stays whole: each half alone would be a different character.
        if (at + length < text.size() && text.at(at + length - 1).isHighSurrogate())
            --length;
        if (at)
            out += u'+';
        appendTemplateLiteral(out, text.sliced(at, length));
        at += length;
    } while (at < text.size());
}

// `before`, the text as literal pieces, then `after`, written into one string reserved once: a
// 10 MB document's call is some 20 MB, and every copy of it costs the window's thread tens of
// milliseconds of fresh memory. (Room for the escapes, and for each piece's quotes and "+".)
static QString aroundPieces(QStringView before, QStringView text, QStringView after)
{
    QString call;
    call.reserve(before.size() + text.size() + text.size() / 16 + 3 * (text.size() / piece + 1)
                 + after.size());
    call += before;
    appendTemplateLiteralPieces(call, text);
    call += after;
    return call;
}

QString templateLiteralPieces(const QString &text)
{
    return aroundPieces({}, text, {});
}

QString quoted(const QString &text)
{
    QString encoded = text;
    encoded.replace(u"\\"_s, u"\\\\"_s);
    encoded.replace(u"'"_s, u"\\'"_s);
    return u'\'' + encoded + u'\'';
}

static QString darkWord(bool isDark)
{
    return isDark ? u"true"_s : u"false"_s;
}

QString startCall(bool isDark)
{
    return u"window.Pagewell && window.Pagewell.init('', "_s + darkWord(isDark) + u");"_s;
}

// The path is quoted like an id: a name such as "l'équipe.md" would otherwise break the call,
// and the page would keep the previous document's text, to be saved over this file.
QString startCall(const QString &content, const QString &filePath, bool isDark)
{
    const QString before = u"window.Pagewell && ((t) => (window.Pagewell.init(t, "_s
        + darkWord(isDark) + u"), window.Pagewell.setContent(t, "_s + quoted(filePath) + u")))("_s;
    return aroundPieces(before, content, u");");
}

QString contentCall(const QString &content, const QString &filePath)
{
    return u"window.Pagewell && window.Pagewell.setContent("_s + templateLiteral(content) + u", "_s
        + quoted(filePath) + u");"_s;
}

QString themeCall(bool isDark)
{
    return u"window.Pagewell && window.Pagewell.setTheme('"_s + (isDark ? u"dark"_s : u"light"_s)
        + u"');"_s;
}

QString showSourceCall(bool shown)
{
    return u"window.Pagewell && window.Pagewell.setShowSource("_s + (shown ? u"true"_s : u"false"_s)
        + u");"_s;
}

QString insertCall(const QString &snippet)
{
    return u"window.Pagewell && window.Pagewell.insertText("_s + templateLiteral(snippet) + u");"_s;
}

QString replaceCall(const QString &content)
{
    return aroundPieces(u"window.Pagewell && window.Pagewell.replaceContent(", content, u");");
}

QString saveCall()
{
    return u"!!(window.Pagewell && window.Pagewell.requestSave());"_s;
}

QString positionCall()
{
    return u"window.Pagewell && window.Pagewell.restorePosition();"_s;
}

QString folderCall(const QString &folderPath)
{
    return u"window.Pagewell && window.Pagewell.setFolder("_s + quoted(folderPath) + u");"_s;
}

QString linkFactsCall(const QJsonObject &facts, const QString &documentPath)
{
    // JSON is a script expression as it stands.
    return u"window.Pagewell && window.Pagewell.setLinkFacts("_s
        + QString::fromUtf8(QJsonDocument(facts).toJson(QJsonDocument::Compact)) + u", "_s
        + quoted(documentPath) + u");"_s;
}

QString textRequestCall()
{
    return u"window.Pagewell && window.Pagewell.sendContent();"_s;
}

QString focusCall()
{
    return u"window.Pagewell && window.Pagewell.focus();"_s;
}

QString scrollCall(const QString &headingId)
{
    return u"window.Pagewell && window.Pagewell.scrollToHeading("_s + quoted(headingId) + u");"_s;
}

QString pathCall(const QString &filePath)
{
    return u"window.Pagewell && window.Pagewell.setDocumentPath("_s + quoted(filePath) + u");"_s;
}

QString lineCall(int line)
{
    return u"window.Pagewell && window.Pagewell.revealLine(%1);"_s.arg(line);
}

QString matchCall(int line, int from, int to)
{
    return u"window.Pagewell && window.Pagewell.revealMatch(%1, %2, %3);"_s.arg(line).arg(from).arg(
        to);
}

} // namespace EditorScripts
