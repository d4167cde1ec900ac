// Times what following the disk costs: setting up the watches of a large folder (off the main
// thread), their memory, the longest stall of the main thread while another program changes
// 1,000 files at once (the store and the tree model taking the changes), and the main thread's
// share of writing a recovery draft of 1 MB and 10 MB.
// Usage: pagewell-diskbench TREE   (TREE is changed: files are made, renamed and removed in it)
#include "FolderTreeModel.h"
#include "workspace/WorkspaceStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

long residentKiB()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return 0;
}

void waitFor(const std::function<bool()> &done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < timeoutMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

// Another program's branch switch: 250 files removed, 250 made, 250 renamed, 250 rewritten.
void switchBranch(const QStringList &files, int round)
{
    for (int i = 0; i < 1000 && i < files.size(); ++i) {
        const QString &file = files[i];
        const QByteArray native = QFile::encodeName(file);
        switch (i % 4) {
        case 0:
            QFile::remove(file);
            break;
        case 1: {
            QFile made(file + u".r%1.md"_s.arg(round));
            if (made.open(QIODevice::WriteOnly))
                made.write("# made\n");
            break;
        }
        case 2:
            QFile::rename(file, file + u".moved%1.md"_s.arg(round));
            break;
        default: {
            QFile rewritten(file);
            if (rewritten.open(QIODevice::WriteOnly | QIODevice::Truncate))
                rewritten.write("# rewritten\n");
        }
        }
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: pagewell-diskbench TREE\n");
        return 2;
    }
    const QString tree = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    QTemporaryDir scratch;

    // Watches set up on the watcher's thread; the main thread only asks.
    std::vector<double> setups;
    int watches = 0;
    long memoryKiB = 0;
    for (int run = 0; run < 5; ++run) {
        const long before = residentKiB();
        FolderWatcher watcher(FileSystemService::defaultIgnoredNames());
        QSignalSpy ready(&watcher, &FolderWatcher::ready);
        QElapsedTimer timer;
        timer.start();
        watcher.setRoot(tree);
        const double asked = double(timer.nsecsElapsed()) / 1e6;
        ready.wait(60000);
        setups.push_back(double(timer.nsecsElapsed()) / 1e6);
        watches = watcher.watchCount();
        memoryKiB = residentKiB() - before;
        if (run == 0)
            std::printf("%-52s %9.3f ms\n", "asking for the watches (main thread)", asked);
    }
    std::printf("%-52s %9.1f ms\n", "watches of the whole tree set up (median)", median(setups));
    std::printf("%-52s %9d\n", "folders watched", watches);
    std::printf("%-52s %9ld KiB (+ ~%d KiB in the kernel)\n", "memory of the watcher", memoryKiB,
                watches * 1080 / 1024);

    // The longest stall of the main thread while 1,000 files change at once.
    WorkspaceStore store(
        std::make_unique<QSettings>(scratch.filePath(u"s.ini"_s), QSettings::IniFormat),
        scratch.filePath(u"drafts"_s));
    store.openFolder(QUrl::fromLocalFile(tree));
    store.startWatching();
    QSignalSpy ready(store.watcher(), &FolderWatcher::ready);
    ready.wait(60000);
    FolderTreeModel model;
    model.setStore(&store);
    const QStringList files = FileSystemService().collectDocumentPaths(*store.rootItem());

    std::vector<double> stalls;
    for (int round = 0; round < 5; ++round) {
        QStringList chosen;
        for (qsizetype i = round; i < files.size() && chosen.size() < 1000; i += 7)
            chosen.append(files[i]);
        QElapsedTimer clock;
        clock.start();
        qint64 last = clock.nsecsElapsed();
        qint64 longest = 0;
        QTimer probe;
        probe.setInterval(1);
        QObject::connect(&probe, &QTimer::timeout, [&] {
            const qint64 now = clock.nsecsElapsed();
            longest = std::max(longest, now - last);
            last = now;
        });
        probe.start();
        std::thread writer([&chosen, round] { switchBranch(chosen, round); });
        const FileSystemService scanner;
        waitFor([] { return false; }, 1500);
        writer.join();
        waitFor([&] { return *store.rootItem() == scanner.scanDirectory(store.rootURL()); }, 5000);
        probe.stop();
        stalls.push_back(double(longest) / 1e6);
    }
    std::printf("%-52s %9.1f ms (worst %.1f)\n", "longest main-thread stall, 1,000 files changed",
                median(stalls), *std::max_element(stalls.begin(), stalls.end()));

    // A draft: what the main thread pays to hand it over, and the write on the draft thread.
    for (const int megabytes : {1, 10}) {
        QString text;
        while (text.size() < megabytes * 1'000'000)
            text += u"Une ligne de texte assez ordinaire pour un document Markdown.\n"_s;
        std::vector<double> handed;
        std::vector<double> written;
        for (int run = 0; run < 7; ++run) {
            text[run] = u'#';
            const QString edited = text + u"x"_s;
            QElapsedTimer timer;
            timer.start();
            store.drafts().save(tree + u"/draft-bench.md"_s, text, edited);
            handed.push_back(double(timer.nsecsElapsed()) / 1e6);
            store.drafts().waitForWrites();
            written.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        store.drafts().remove(tree + u"/draft-bench.md"_s);
        store.drafts().waitForWrites();
        std::printf("draft of %2d MB: main thread %.3f ms, on disk after %.1f ms (medians)\n",
                    megabytes, median(handed), median(written));
    }
    return 0;
}
