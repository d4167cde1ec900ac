// Times what the window does with large folders: opening a folder to the first frame of a tree
// view, and through the views' own models, opening it into tree rows, expanding and collapsing a
// folder of 10,000 entries, publishing a search's hits to the panel, and the header's statistics
// of large documents.
// Prints medians in milliseconds.
#include "EditorHeaderModel.h"
#include "FolderTreeModel.h"
#include "SearchResultsModel.h"
#include "workspace/WorkspaceStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickView>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

Q_IMPORT_QML_PLUGIN(PagewellPlugin)
Q_IMPORT_QML_PLUGIN(Pagewell_EditorPlugin)

using namespace Qt::StringLiterals;

namespace {

double medianMs(int runs, const std::function<void()> &prepare, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        prepare();
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void report(const char *what, double ms)
{
    std::printf("%-44s %9.2f ms\n", what, ms);
}

} // namespace

// The application's store opens the folder, and a new tree view draws its first frame.
double firstTreeFrameMs(const QString &tree)
{
    QQuickView view;
    view.engine()->addImportPath(u"qrc:/qt/qml"_s);
    view.resize(300, 800);
    bool drawn = false;
    QObject::connect(&view, &QQuickWindow::frameSwapped, [&drawn] { drawn = true; });
    QElapsedTimer timer;
    timer.start();
    WorkspaceStore::shared()->openFolder(QUrl::fromLocalFile(tree));
    QQmlComponent component(view.engine());
    component.setData("import QtQuick; import Pagewell; FolderTreeView {}", QUrl());
    view.setContent(QUrl(), &component, component.create());
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.show();
    while (!drawn)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return double(timer.nsecsElapsed()) / 1e6;
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir scratch;
    // The application's store keeps its preferences here, not in the user's.
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(scratch.filePath(u"config"_s)));
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: pagewell-viewbench TREE\n");
        return 2;
    }
    const QString tree = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    WorkspaceStore store(
        std::make_unique<QSettings>(scratch.filePath(u"s.ini"_s), QSettings::IniFormat));

    std::vector<double> frames;
    for (int i = 0; i < 7; ++i)
        frames.push_back(firstTreeFrameMs(tree));
    std::sort(frames.begin(), frames.end());
    report("open folder to first tree frame", frames[frames.size() / 2]);

    report("open folder to tree rows",
           medianMs(
               7, [] {},
               [&] {
                   store.openFolder(QUrl::fromLocalFile(tree));
                   FolderTreeModel model;
                   model.setStore(&store);
               }));

    // A folder of 10,000 entries beside the tree.
    const QString wide = scratch.filePath(u"wide"_s);
    QDir().mkpath(wide + u"/big"_s);
    for (int i = 0; i < 10000; ++i) {
        QFile file(wide + u"/big/note-%1.md"_s.arg(i));
        file.open(QIODevice::WriteOnly);
    }
    store.openFolder(QUrl::fromLocalFile(wide));
    FolderTreeModel wideModel;
    wideModel.setStore(&store);
    report("expand a folder of 10,000 entries",
           medianMs(
               15, [&] { wideModel.collapse(0); }, [&] { wideModel.expand(0); }));
    report("collapse it",
           medianMs(
               15, [&] { wideModel.expand(0); }, [&] { wideModel.collapse(0); }));

    store.openFolder(QUrl::fromLocalFile(tree));
    store.updateSearch(u"configuration"_s);
    while (store.isSearching())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    qsizetype hits = 0;
    for (const FileSearchResults &file : store.searchResults())
        hits += file.matches.size();
    std::printf("(search: %lld hits in %lld files)\n", static_cast<long long>(hits),
                static_cast<long long>(store.searchResults().size()));
    report("publish the hits to the panel model",
           medianMs(
               15, [] {},
               [&] {
                   SearchResultsModel model;
                   model.setStore(&store);
               }));

    // Documents of 1 and 10 MB made from the corpus' own text.
    QString corpusText;
    for (const QString &path : FileSystemService().collectDocumentPaths(*store.rootItem())) {
        QFile file(path);
        if (path.endsWith(u".md"_s) && file.open(QIODevice::ReadOnly))
            corpusText += QString::fromUtf8(file.readAll());
        if (corpusText.size() > 10'500'000)
            break;
    }
    for (const qsizetype megabytes : {1, 10}) {
        const QString text = corpusText.left(megabytes * 1'000'000);
        EditorHeaderModel header;
        header.setStore(&store);
        int edit = 0;
        const double ms = medianMs(
            15, [] {},
            [&] {
                // One edit message: the whole text, one character different.
                store.updateDocumentContent(text + QChar(u'a' + (++edit % 26)));
            });
        report(megabytes == 1 ? "header statistics, 1 MB document"
                              : "header statistics, 10 MB document",
               ms);
    }
    return 0;
}
