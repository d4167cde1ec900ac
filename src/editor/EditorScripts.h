#pragma once

#include <QJsonObject>
#include <QString>

// The script calls the native side sends to the editor page's `window.Pagewell`. Each begins with
// a guard on that object, so a call made before the page is ready does nothing.
namespace EditorScripts {

// Text between backticks: backslashes doubled, then every backtick and every dollar sign
// escaped, and carriage returns written as \r (raw, the script would read them as LF). Other
// line breaks and quotes stay as they are.
QString templateLiteral(QStringView text);
// The same text as template literals of at most 4 Ki units joined with `+`: the script engine
// reads one literal of megabytes in a time that grows faster than its length (2 s for 10 MB), and
// short pieces of Latin text stay one byte a unit even when the document holds other scripts
// (10 MB: 0.55 s in pieces of 64 Ki, 0.40 s in pieces of 4 Ki).
QString templateLiteralPieces(const QString &text);
// Text between single quotes: backslashes doubled, then single quotes escaped.
QString quoted(const QString &text);

QString startCall(bool isDark);
// The text is written once, in pieces, and handed to both calls: for megabytes, the page's
// script engine reads every copy of the literal.
QString startCall(const QString &content, const QString &filePath, bool isDark);
QString contentCall(const QString &content, const QString &filePath);
QString themeCall(bool isDark);
// Every line as written, or the markup stepping aside away from the caret.
QString showSourceCall(bool shown);
QString insertCall(const QString &snippet);
// The open document's text replaced from outside the page (a new version on disk, a restored
// draft): the page takes it as one change, so undo brings the previous text back.
QString replaceCall(const QString &content);
// Asks the page to send the text it shows, then to ask for a save, as its own Ctrl+S does; the
// evaluation answers false when the page is not there to do it.
QString saveCall();
// Asks the page for the whole text it shows, once: its edits no longer fit the text held here.
QString textRequestCall();
// Gives the text the keyboard, as a click in it would.
QString focusCall();
QString scrollCall(const QString &headingId);
// The open document's file was renamed or moved: the page keeps it under its new path.
QString pathCall(const QString &filePath);
// Shows the line `line` (from 0) with the caret at its start.
QString lineCall(int line);
// Selects [from, to) of the line `line` (from 0, offsets in UTF-16 units) and shows it mid-view.
QString matchCall(int line, int from, int to);
// Shows the open document where it was left when another replaced it (going back or forth).
QString positionCall();
// The open folder, the only place pictures are shown from.
QString folderCall(const QString &folderPath);
// What the host found about the links and pictures of the document at `documentPath`.
QString linkFactsCall(const QJsonObject &facts, const QString &documentPath);

} // namespace EditorScripts
