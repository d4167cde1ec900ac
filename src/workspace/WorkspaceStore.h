#pragma once

#include "DocumentNotice.h"
#include "DraftKeeper.h"
#include "FolderOperations.h"
#include "FolderReplace.h"
#include "FolderSearch.h"
#include "FolderTree.h"
#include "LinkIndex.h"
#include "NavigationHistory.h"
#include "OpenDocument.h"
#include "WorkspaceSession.h"
#include "model/EditorDocument.h"
#include "model/FileItem.h"
#include "model/FileSearchResults.h"
#include "model/HeadingItem.h"
#include "model/SidebarMode.h"
#include "services/LatestRun.h"

#include <QList>
#include <QObject>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>
#include <QVariantMap>

#include <memory>
#include <optional>

// The one observable state of the workspace: the open folder and its tree, the selection, the
// open document, the search state, the pending alert and the remembered session. Views read it
// and change it only through its operations. Every property assignment notifies, even when the
// value is equal. Lives on the main thread.
//
// Once watching, it follows the disk: the tree takes the entries other programs make, remove or
// rename; the open document takes a new text written elsewhere while it has no edits, and says so
// instead when it has; a save never writes over a file changed since it was read. Unsaved edits
// are kept as recovery drafts, offered again when the document is opened next.
//
// Items of the folder are renamed and moved with the links that lead to them, deleted into the
// desktop's trash, the matches of a search replaced in every document, and the last of these can
// be taken back.
//
// The store is a front: each job is done in a room of its own (the session, the folder tree,
// the open document, its drafts, the history, the search, the link index, the operations on
// items), and the store publishes their state
// under one set of properties and signals and runs the operations that touch several of them.
class WorkspaceStore : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QUrl rootURL READ rootURL NOTIFY rootURLChanged)
    Q_PROPERTY(QVariant rootItem READ rootItemValue NOTIFY rootItemChanged)
    Q_PROPERTY(QUrl selectedFileURL READ selectedFileURL NOTIFY selectedFileURLChanged)
    Q_PROPERTY(QVariant currentDocument READ currentDocumentValue NOTIFY currentDocumentChanged)
    Q_PROPERTY(QStringList recentFolderPaths READ recentFolderPaths NOTIFY recentFolderPathsChanged)
    Q_PROPERTY(SidebarMode::Value sidebarMode READ sidebarMode WRITE setSidebarMode NOTIFY
                   sidebarModeChanged)
    Q_PROPERTY(QString searchQuery READ searchQuery NOTIFY searchQueryChanged)
    Q_PROPERTY(
        QList<FileSearchResults> searchResults READ searchResults NOTIFY searchResultsChanged)
    Q_PROPERTY(bool isSearching READ isSearching NOTIFY isSearchingChanged)
    Q_PROPERTY(QString fileFilterQuery READ fileFilterQuery NOTIFY fileFilterQueryChanged)
    Q_PROPERTY(bool isOutlineVisible READ isOutlineVisible WRITE setOutlineVisible NOTIFY
                   isOutlineVisibleChanged)
    // Every line of every document shown as written, the markup never stepping aside; remembered.
    Q_PROPERTY(bool showSource READ showSource WRITE setShowSource NOTIFY showSourceChanged)
    Q_PROPERTY(QString alertMessage READ alertMessage NOTIFY alertMessageChanged)
    Q_PROPERTY(bool showAlert READ showAlert WRITE setShowAlert NOTIFY showAlertChanged)
    // What the bar above the editor tells about the open document, and why a save waits.
    Q_PROPERTY(DocumentNotice::Value notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(QString noticeMessage READ noticeMessage NOTIFY noticeChanged)
    // What the views derive from the published state, said once here.
    Q_PROPERTY(bool hasFolder READ hasFolder NOTIFY rootURLChanged)
    Q_PROPERTY(QString folderName READ folderName NOTIFY rootURLChanged)
    Q_PROPERTY(bool hasDocument READ hasDocument NOTIFY currentDocumentChanged)
    Q_PROPERTY(bool isSearchQueryBlank READ isSearchQueryBlank NOTIFY searchQueryChanged)
    Q_PROPERTY(QString noticeDetail READ noticeDetail NOTIFY noticeChanged)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY historyChanged)
    Q_PROPERTY(bool canGoForward READ canGoForward NOTIFY historyChanged)
    // What the last rename, move or deletion did, while "Annuler" can take it back.
    Q_PROPERTY(QString operationMessage READ operationMessage NOTIFY operationChanged)
    // How the search reads its query, and why it finds nothing (an invalid expression).
    Q_PROPERTY(bool searchCaseSensitive READ searchCaseSensitive WRITE setSearchCaseSensitive NOTIFY
                   searchOptionsChanged)
    Q_PROPERTY(bool searchWholeWord READ searchWholeWord WRITE setSearchWholeWord NOTIFY
                   searchOptionsChanged)
    Q_PROPERTY(bool searchRegularExpression READ searchRegularExpression WRITE
                   setSearchRegularExpression NOTIFY searchOptionsChanged)
    Q_PROPERTY(QString searchError READ searchError NOTIFY searchOptionsChanged)
    // A replace across the folder, or its undoing, is being written.
    Q_PROPERTY(bool isReplacing READ isReplacing NOTIFY isReplacingChanged)

public:
    // Loads the recent folders and restores the last session from `settings` before returning.
    // Recovery drafts live in `draftsFolder` (the user's state folder when empty).
    explicit WorkspaceStore(std::unique_ptr<QSettings> settings,
                            const QString &draftsFolder = QString(), QObject *parent = nullptr);
    ~WorkspaceStore() override;

    // The application's store, made on first use with the user's preferences.
    static WorkspaceStore *shared();

    QUrl rootURL() const { return m_tree.rootURL(); }
    const std::optional<FileItem> &rootItem() const { return m_tree.rootItem(); }
    QUrl selectedFileURL() const { return m_selectedFileURL; }
    const std::optional<EditorDocument> &currentDocument() const { return m_document.document(); }
    QStringList recentFolderPaths() const { return m_session.recentFolderPaths(); }
    SidebarMode::Value sidebarMode() const { return m_sidebarMode; }
    QString searchQuery() const { return m_search.query(); }
    QList<FileSearchResults> searchResults() const { return m_search.results(); }
    bool isSearching() const { return m_search.isSearching(); }
    QString fileFilterQuery() const { return m_fileFilterQuery; }
    bool isOutlineVisible() const { return m_isOutlineVisible; }
    bool showSource() const { return m_session.showSource(); }
    // Empty until the first failure; the next failure overwrites it.
    QString alertMessage() const { return m_alertMessage.value_or(QString()); }
    const std::optional<QString> &optionalAlertMessage() const { return m_alertMessage; }
    bool showAlert() const { return m_showAlert; }
    DocumentNotice::Value notice() const { return m_document.notice(); }
    bool hasFolder() const { return !rootURL().isEmpty(); }
    // The open folder's name, or "Aucun dossier ouvert".
    QString folderName() const;
    bool hasDocument() const { return currentDocument().has_value(); }
    bool isSearchQueryBlank() const;
    // Whether the new-file sheet may create a document under `name`: not a blank one.
    Q_INVOKABLE bool acceptsNewFileName(const QString &name) const;
    QString noticeMessage() const { return m_document.noticeMessage(); }
    QString noticeDetail() const { return m_document.noticeDetail(); }

    QVariant rootItemValue() const;
    QVariant currentDocumentValue() const;

    void setSidebarMode(SidebarMode::Value mode);
    void setOutlineVisible(bool visible);
    void setShowSource(bool shown);
    void setShowAlert(bool show);

    // Makes `url` the open folder, records it as the most recent one, scans it and opens the
    // preferred file when it exists, else the folder's readme, else its first document.
    Q_INVOKABLE void openFolder(const QUrl &url, const QUrl &preferredFileURL = QUrl());
    Q_INVOKABLE void reloadCurrentFolder();
    Q_INVOKABLE void clearRecentFolders();

    // Reads the file into a new, clean document and selects it. The file already open is kept
    // as it is, unsaved edits included.
    Q_INVOKABLE void openFile(const QUrl &url);
    // Follows a link written in the document at `fromPath` (the target exactly as written): the
    // document it leads to opens, and its heading is asked for; a link leading nowhere in the
    // folder changes nothing and says so.
    void followLink(const QString &target, const QString &fromPath);
    // The editor's whole text; a different text marks the document modified until it is saved.
    Q_INVOKABLE void updateDocumentContent(const QString &newContent);
    // The last text of the document that the open one replaced, arriving after the replacement:
    // kept as that document's draft when it differs from its file.
    void updateReplacedDocumentContent(const QString &path, const QString &text);
    // The editor's edits of the text held here, for a large document: the same rules as a whole
    // text, with no copy of it. False when they do not fit, the text having gone astray.
    bool editDocumentContent(const QList<TextEdit> &edits, qsizetype length);
    // Edits of the document the open one replaced, arriving after the replacement.
    void editReplacedDocumentContent(const QString &path, const QList<TextEdit> &edits,
                                     qsizetype length);
    // The open document's words and characters, kept up to date through edits.
    DocumentStatistics::Counts documentStatistics() const { return m_document.statistics(); }
    void updateHeadings(const QList<HeadingItem> &headings);
    // Writes the open document to its file atomically.
    Q_INVOKABLE void saveCurrentDocument();
    // A save asked for outside the editor page (the menu, the header's button): the page, when
    // there is one, first hands over what it shows, then the document is saved.
    Q_INVOKABLE void requestSave();

    // Creates a document from the typed name in `folder`, or in the open folder, then rescans and
    // opens it.
    Q_INVOKABLE void createNewFile(const QString &name, const QUrl &folder = QUrl());
    // Creates "untitled.md" in the open folder, or "untitled 2.md", ... when that name is taken.
    Q_INVOKABLE void createUntitledFile();
    // Why a new document named `name` cannot be made in `folder` (the open folder when empty):
    // its name is taken. Empty when it can.
    Q_INVOKABLE QString newFileRefusal(const QString &name, const QUrl &folder = QUrl()) const;
    // Puts a file or a folder in the desktop's trash and rescans; deleting the open file closes
    // it. Where no trash can take it, permanentDeletionRequest asks first.
    Q_INVOKABLE void deleteFile(const QUrl &url);
    // Removes an item for good (the answer to permanentDeletionRequest).
    Q_INVOKABLE void deletePermanently(const QUrl &url);

    // Why the item at `url` cannot take the name `name` in its folder; empty when it can.
    Q_INVOKABLE QString renameRefusal(const QUrl &url, const QString &name) const;
    // Whether the item at `url` may move into `folder`: not into itself or below itself, nor
    // where it already is.
    Q_INVOKABLE bool canMoveInto(const QUrl &url, const QUrl &folder) const;
    // Prepares renaming the item at `url` to `name`, or moving it into `folder`, and says what
    // that changes: {refusal, links, documents (paths from the open folder), question}. Nothing
    // happens until applyPendingMove(). A move refused is also said by the alert.
    Q_INVOKABLE QVariantMap prepareRename(const QUrl &url, const QString &name);
    Q_INVOKABLE QVariantMap prepareMove(const QUrl &url, const QUrl &folder);
    // Renames or moves as prepared, with the links that lead to it rewritten or not.
    Q_INVOKABLE void applyPendingMove(bool updateLinks);
    Q_INVOKABLE void cancelPendingMove();
    // Takes the last rename, move or deletion back; dismisses its message.
    Q_INVOKABLE void undoLastOperation();
    Q_INVOKABLE void dismissOperation();
    QString operationMessage() const { return m_operationMessage; }

    // The documents of the folder whose links lead to the open one, each at the line of its
    // first such link.
    struct Backlink
    {
        QString path;
        int line; // from 0
        QString lineText;
    };
    QList<Backlink> backlinks() const;
    const LinkIndex &linkIndex() const { return m_links; }
    // Opens the document and shows the line `line` (from 0).
    Q_INVOKABLE void openFileAtLine(const QUrl &url, int line);
    // Opens the document at the line `line` (from 0), [from, to) of that line selected.
    Q_INVOKABLE void openFileAtMatch(const QUrl &url, int line, int from, int to);

    // Records the query and searches the open folder in the background, superseding the search
    // under way; its results are published here unless a later call superseded it meanwhile.
    Q_INVOKABLE void updateSearch(const QString &query);
    const SearchOptions &searchOptions() const { return m_search.options(); }
    bool searchCaseSensitive() const { return searchOptions().caseSensitive; }
    bool searchWholeWord() const { return searchOptions().wholeWord; }
    bool searchRegularExpression() const { return searchOptions().regularExpression; }
    QString searchError() const { return m_search.error(); }
    void setSearchCaseSensitive(bool on);
    void setSearchWholeWord(bool on);
    void setSearchRegularExpression(bool on);
    void setSearchOptions(SearchOptions options) { m_search.setOptions(options); }

    // Replaces every match the search lists by `replacement`: in the open document's text as one
    // change, unsaved edits included, and in the files of the others, in the background. Then
    // "Annuler" can take it back.
    Q_INVOKABLE void replaceAll(const QString &replacement);
    bool isReplacing() const { return m_replaceRun.isRunning(); }

    // Asks the editor page to scroll to a heading, or to insert text at the caret. Only
    // receivers connected at that moment get the value.
    Q_INVOKABLE void requestHeadingScroll(const QString &headingId);
    Q_INVOKABLE void requestSnippetInsert(const QString &snippet);

    // The documents opened in this window, in order, whatever opened them: "Précédent" and
    // "Suivant" go back and forth over them, each shown where it was left. Opening a document
    // after going back drops the ones ahead; opening a folder starts a new history.
    bool canGoBack() const { return m_history.canGoBack(); }
    bool canGoForward() const { return m_history.canGoForward(); }
    Q_INVOKABLE void goBack() { travel(-1); }
    // The documents opened in this window, the most recent first (historyChanged tells).
    const QStringList &recentDocumentPaths() const { return m_history.recent(); }
    Q_INVOKABLE void goForward() { travel(1); }

    // The answers of the bar above the editor. "Rétablir" takes the offered draft (modified, not
    // written); "Ignorer" deletes it; "Recharger" reads the file again, the edits staying as a
    // draft; "Garder mes modifications" lets the next save write the edits over the new file.
    Q_INVOKABLE void restoreDraft();
    Q_INVOKABLE void discardDraft();
    Q_INVOKABLE void reloadDocumentFromDisk();
    Q_INVOKABLE void keepEdits();

    // Follows the open folder and the open document's file on disk from now on. `watchLimit`
    // caps the folders watched (0: the system's limit).
    void startWatching(int watchLimit = 0);
    const FolderWatcher *watcher() const { return m_tree.watcher(); }
    // The window came to the front: the document is checked against its file, and where not
    // every folder can be watched, the tree is read again.
    void applicationActivated();
    // Writes the open document's draft now and waits until it is on the disk.
    void flushDraft();
    DraftStore &drafts() { return m_drafts.drafts(); }

Q_SIGNALS:
    void rootURLChanged();
    void rootItemChanged();
    void selectedFileURLChanged();
    void currentDocumentChanged();
    void recentFolderPathsChanged();
    void sidebarModeChanged();
    void searchQueryChanged();
    void searchResultsChanged();
    void isSearchingChanged();
    void fileFilterQueryChanged();
    void isOutlineVisibleChanged();
    void showSourceChanged();
    void alertMessageChanged();
    void showAlertChanged();

    void noticeChanged();
    // The open document's file was changed, replaced or removed by another program.
    void documentFileChanged();
    // What changed in the open document, announced after currentDocumentChanged so that a view
    // does only its own work: another document (or none) took its place (then the three others
    // follow too), its text, its headings, its modified flag and save time.
    void documentReplaced();
    void documentTextChanged();
    void documentHeadingsChanged();
    void documentModifiedChanged();

    void historyChanged();
    void operationChanged();
    void searchOptionsChanged();
    void isReplacingChanged();
    // No trash can take the item: the window asks before removing it for good.
    void permanentDeletionRequest(const QUrl &url, const QString &name);
    // The links that lead to the open document may have changed.
    void backlinksChanged();
    // The open document moved here, from `from` to `to`: the page keeps its text and history.
    void documentRelocated(const QUrl &from, const QUrl &to);
    // The editor page is to show the line `line` (from 0) of the open document.
    void lineRevealRequest(int line);
    // The editor page is to select [from, to) of the line `line` and show it mid-view.
    void matchRevealRequest(int line, int from, int to);

    // Requests towards the editor page, each heard once by whoever listens at that moment: a
    // heading to scroll to, text to insert at the caret, a document reached by going back or
    // forth to be shown where it was left.
    void headingScrollRequest(const QString &headingId);
    void snippetInsertRequest(const QString &snippet);
    void historyPositionRequest();
    // The open document's text was replaced here, not typed in the page (a new version from the
    // disk, a restored draft): the page is to take it as one change that undo can take back.
    void documentTextReplaced();
    // A save was asked for: the editor page is to send its text and then save.
    void saveRequest();

private:
    void restoreLastSession();
    void presentAlert(const QString &prefix, const FileError &error);
    void travel(int step);
    void setSelectedFileURL(const QUrl &url);
    void setAlertMessage(const QString &message);
    void diskChanged(const FolderWatcher::Changes &changes);
    QVariantMap prepare(const QString &from, const QString &to, bool isFolder,
                        const QString &refusal);
    // The open document, its draft, selection, history and session follow a moved item.
    void followMove(const LinkRewriter::Move &move);
    void setOperation(const QString &message);
    void closeIfSelected(const QUrl &url);
    // Whether `done` wrote the open document's file.
    bool wroteOpenDocument(const FolderOperations::Done &done) const;
    // The tree read again and the documents written read again by the link index.
    void refreshAfterMove(const QSet<QString> &written);
    void alertFailures(const QString &title, const QStringList &leftAlone,
                       const QStringList &failed, const QList<FileError> &errors);
    // A replace, or its undoing, is written: the open document's text, the link index, the
    // search and the message follow.
    void replaceDone(const FolderReplace::Done &done, bool undoing);

    WorkspaceSession m_session;
    FolderTree m_tree;
    OpenDocument m_document;
    DraftKeeper m_drafts;
    FolderSearch m_search {&m_tree};
    NavigationHistory m_history;
    LinkIndex m_links;
    std::optional<FolderOperations::Plan> m_pendingMove;
    // What "Annuler" takes back: the last move, with the open document's text before and after
    // it, or the last item put in the trash.
    std::optional<FolderOperations::Done> m_lastMove;
    QString m_pageTextBefore;
    QString m_pageTextAfter;
    std::optional<FolderOperations::Trashed> m_lastTrash;
    // The last replace across the folder, and the open document it changed in the page.
    std::optional<FolderReplace::Done> m_lastReplace;
    QString m_replacedPagePath;
    int m_pageReplaced = 0;
    LatestRun<FolderReplace::Done> m_replaceRun {this};
    QString m_operationMessage;
    bool m_travelling = false;

    QUrl m_selectedFileURL;
    SidebarMode::Value m_sidebarMode = SidebarMode::Explorer;
    QString m_fileFilterQuery;
    bool m_isOutlineVisible = true;
    std::optional<QString> m_alertMessage;
    bool m_showAlert = false;
};
