// Drives Pagewell's own services the way the application does, for benchmarks and for scripts
// that compare results.
//   pagewell-bench scan DIR [--repeat N]
//       entries in the sorted tree and the median time to scan it
//   pagewell-bench search DIR QUERY [--engine bytes|unicode] [--case] [--word] [--regex]
//                  [--repeat N] [--quiet]
//       every hit as relativePath<TAB>lineNumber<TAB>lineContent, files in result order, then
//       the hit and file counts (and the median time with --repeat); --case, --word and --regex
//       are the search panel's three toggles
//   pagewell-bench replace DIR QUERY REPLACEMENT [--documents N]
//       "Tout remplacer" through the store, in a scratch copy of the first N documents of DIR
//       (1,000 unless told): the time until every file is written, and the longest the store's
//       thread went without running its event loop meanwhile
//   pagewell-bench quickopen DIR QUERY [--copies N] [--list]
//       the documents "Aller au fichier..." lists for QUERY, best first, one relative path a
//       line; on stderr the time of each key as one types QUERY (median of 15). --copies N
//       ranks the folder's documents N times, under copy2/, copy3/..., for a longer list;
//       --list prints that whole list instead, for fzf.
//   pagewell-bench links DIR [--repeat N]
//       the link index of DIR: time to build it, its memory, then for the most linked document
//       the time to find the documents linking to it, to plan its rename and to list its
//       backlinks; then a rename whose links stand in 500 documents, written in a scratch copy
#include "services/FileSystemService.h"
#include "services/LinkResolver.h"
#include "services/SearchService.h"
#include "workspace/DocumentFinder.h"
#include "workspace/FolderOperations.h"
#include "workspace/LinkIndex.h"
#include "workspace/WorkspaceStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSettings>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

namespace {

qsizetype countEntries(const FileItem &item)
{
    qsizetype count = 0;
    for (const FileItem &child : item.children())
        count += 1 + countEntries(child);
    return count;
}

int scan(const QString &dir, int repeat)
{
    const FileSystemService service;
    const QUrl url = QUrl::fromLocalFile(dir);
    std::vector<double> times;
    qsizetype entries = 0;
    for (int i = 0; i < repeat; ++i) {
        QElapsedTimer timer;
        timer.start();
        const FileItem root = service.scanDirectory(url);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
        entries = countEntries(root);
    }
    std::sort(times.begin(), times.end());
    QTextStream(stdout) << "entries\t" << entries << "\nmedian_ms\t" << times[times.size() / 2]
                        << '\n';
    return 0;
}

int search(const QString &dir, const QString &query, SearchService::Engine engine,
           SearchOptions options, int repeat, bool quiet)
{
    const QUrl url = QUrl::fromLocalFile(dir);
    const FileItem root = FileSystemService().scanDirectory(url);
    const SearchService service(engine);
    std::vector<double> times;
    QList<FileSearchResults> results;
    for (int i = 0; i < repeat; ++i) {
        // The previous results go first: freeing them is not the search's work.
        results = {};
        QElapsedTimer timer;
        timer.start();
        results = service.search(query, root, url, nullptr, options);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    // Written as UTF-8 straight into one block buffer, whatever the locale.
    QByteArray out;
    out.reserve(1 << 17);
    const auto flush = [&out] {
        std::fwrite(out.constData(), 1, size_t(out.size()), stdout);
        out.clear();
    };
    QStringEncoder utf8(QStringEncoder::Utf8);
    const auto append = [&out, &utf8](QStringView text) {
        const qsizetype used = out.size();
        out.resize(used + utf8.requiredSpace(text.size()));
        char *end = utf8.appendToBuffer(out.data() + used, text);
        out.truncate(end - out.constData());
    };
    qsizetype hits = 0;
    for (const FileSearchResults &file : results) {
        hits += file.matches.size();
        if (quiet)
            continue;
        for (const SearchResult &hit : file.matches) {
            append(file.relativePath);
            out += '\t';
            char number[16];
            out.append(number,
                       std::to_chars(number, number + sizeof number, hit.lineNumber).ptr - number);
            out += '\t';
            append(hit.lineContent);
            out += '\n';
            if (out.size() > 1 << 16)
                flush();
        }
    }
    out += "hits\t" + QByteArray::number(hits) + "\nfiles\t" + QByteArray::number(results.size())
        + '\n';
    if (repeat > 1) {
        const double first = times.front(); // in a fresh heap, as a first search is
        std::sort(times.begin(), times.end());
        out += "median_ms\t" + QByteArray::number(times[times.size() / 2]) + "\nfirst_ms\t"
            + QByteArray::number(first) + '\n';
    }
    flush();
    return 0;
}

// Resolves a link written in the deepest document of the tree, as a Ctrl+click does once the
// page has posted it: the host's share of following a link.
int link(const QString &dir, const QString &target, int repeat)
{
    const FileSystemService service;
    const FileItem root = service.scanDirectory(QUrl::fromLocalFile(QDir(dir).absolutePath()));
    const QStringList documents = service.collectDocumentPaths(root);
    if (documents.isEmpty())
        return 1;
    const QString from = *std::max_element(
        documents.begin(), documents.end(),
        [](const QString &a, const QString &b) { return a.count(u'/') < b.count(u'/'); });
    std::vector<double> times;
    std::optional<LinkResolver::Target> found;
    for (int i = 0; i < repeat; ++i) {
        QElapsedTimer timer;
        timer.start();
        found = LinkResolver::resolve(target, from, root);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    QTextStream(stdout) << "documents\t" << documents.size() << "\nfrom\t" << from << "\nfound\t"
                        << (found ? found->path : QStringLiteral("-")) << "\nmedian_ms\t"
                        << times[times.size() / 2] << '\n';
    return 0;
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

template<typename Work> double timeMs(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

// The resident memory of this process, in MiB.
double residentMiB()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toDouble() * 4096 / (1024 * 1024) : 0;
}

int links(const QString &dir, int repeat)
{
    const FileSystemService service;
    const FileItem root = service.scanDirectory(QUrl::fromLocalFile(QDir(dir).absolutePath()));
    std::vector<double> builds;
    std::shared_ptr<const LinkIndex::Snapshot> snapshot;
    const double before = residentMiB();
    const std::atomic_bool replaced = false;
    for (int i = 0; i < repeat; ++i) {
        snapshot.reset();
        builds.push_back(timeMs(
            [&] { snapshot = LinkIndex::build(root, LinkIndex::Snapshot(), {}, true, replaced); }));
    }
    const double memory = residentMiB() - before;
    qsizetype linkCount = 0;
    for (const QList<LinkIndex::Link> &list : snapshot->written)
        linkCount += list.size();
    QString target;
    for (auto it = snapshot->incoming.cbegin(); it != snapshot->incoming.cend(); ++it) {
        if (QFileInfo(it.key()).isFile() && it.key().endsWith(u".md")
            && (target.isEmpty() || it->size() > snapshot->incoming.value(target).size()))
            target = it.key();
    }

    LinkIndex index;
    index.update(root);
    index.waitUntilCurrent();
    std::vector<double> finds, plans, backlinks;
    QStringList linking;
    FolderOperations::Plan plan;
    const LinkRewriter::Move move {target, target.section(u'/', 0, -2) + u"/renamed.md", false};
    for (int i = 0; i < repeat; ++i) {
        finds.push_back(timeMs([&] { linking = index.documentsLinkingTo(target); }));
        backlinks.push_back(timeMs([&] { (void)index.linksTo(target); }));
        plans.push_back(timeMs([&] { plan = FolderOperations::plan(root, move, linking, true); }));
    }

    // 500 documents linking to one, renamed for real in a scratch folder.
    QTemporaryDir scratch;
    QDir().mkpath(scratch.filePath(QStringLiteral("docs/notes")));
    QFile(scratch.filePath(QStringLiteral("docs/cible.md"))).open(QIODevice::WriteOnly);
    for (int i = 0; i < 500; ++i) {
        QFile file(scratch.filePath(QStringLiteral("docs/notes/n%1.md").arg(i)));
        file.open(QIODevice::WriteOnly);
        file.write("# Note\n\n" + QByteArray(2000, 'x')
                   + "\n\nVoir [la cible](../cible.md) et [[cible]].\n");
    }
    const FileItem small
        = service.scanDirectory(QUrl::fromLocalFile(scratch.filePath(QStringLiteral("docs"))));
    LinkIndex smallIndex;
    smallIndex.update(small);
    smallIndex.waitUntilCurrent();
    const QString cible = scratch.filePath(QStringLiteral("docs/cible.md"));
    int written = 0;
    const double rename = timeMs([&] {
        const FolderOperations::Plan renamePlan = FolderOperations::plan(
            small, {cible, scratch.filePath(QStringLiteral("docs/but.md")), false},
            smallIndex.documentsLinkingTo(cible), true);
        const auto done = FolderOperations::perform(renamePlan);
        written = int(std::get<FolderOperations::Done>(done).written.size());
    });

    QTextStream(stdout) << "documents\t" << snapshot->written.size() << "\nlinks\t" << linkCount
                        << "\nbuild_ms\t" << median(builds) << "\nmemory_mib\t" << memory
                        << "\ntarget\t" << target << "\nlinking_documents\t" << linking.size()
                        << "\nplanned_links\t" << plan.links() << "\nfind_ms\t" << median(finds)
                        << "\nbacklinks_ms\t" << median(backlinks) << "\nplan_ms\t" << median(plans)
                        << "\nrename500_written\t" << written << "\nrename500_ms\t" << rename
                        << '\n';
    return 0;
}

int intOption(const QStringList &args, const QString &name, int fallback)
{
    const qsizetype at = args.indexOf(name);
    return at > 0 && at + 1 < args.size() ? std::max(1, args.at(at + 1).toInt()) : fallback;
}

int quickOpen(const QString &dir, const QString &query, int copies, bool list)
{
    const FileSystemService service;
    // Absolute, as the window's folder is: paths are ranked relative to it.
    const QString root = QDir(dir).absolutePath();
    const QUrl url = QUrl::fromLocalFile(root);
    const QStringList documents = service.collectDocumentPaths(service.scanDirectory(url));
    QStringList paths = documents;
    for (int copy = 2; copy <= copies; ++copy) {
        for (const QString &path : documents)
            paths.append(root + QStringLiteral("/copy") + QString::number(copy)
                         + path.mid(root.size()));
    }
    DocumentFinder finder;
    finder.setDocuments(paths, root);
    QTextStream out(stdout);
    if (list) {
        for (const QString &path : paths)
            out << finder.relativePath(path) << '\n';
        return 0;
    }
    // Each key as typed, the finder narrowing from the previous one, fifteen times over.
    std::vector<std::vector<double>> perKey(std::size_t(query.size()));
    std::vector<qsizetype> found;
    for (int round = 0; round < 15; ++round) {
        finder.setDocuments(paths, root);
        for (qsizetype key = 1; key <= query.size(); ++key) {
            QElapsedTimer timer;
            timer.start();
            found = finder.rank(query.left(key), {});
            perKey[std::size_t(key - 1)].push_back(double(timer.nsecsElapsed()) / 1e6);
        }
    }
    for (qsizetype index : found)
        out << finder.relativePath(finder.path(index)) << '\n';
    out.flush();
    QTextStream err(stderr);
    double slowest = 0;
    for (std::size_t key = 0; key < perKey.size(); ++key) {
        std::sort(perKey[key].begin(), perKey[key].end());
        const double median = perKey[key][perKey[key].size() / 2];
        slowest = std::max(slowest, median);
        err << "key " << key + 1 << " \"" << query.left(qsizetype(key) + 1) << "\": " << median
            << " ms\n";
    }
    err << "paths\t" << paths.size() << "\nmatches\t" << found.size() << "\nslowest_key_ms\t"
        << slowest << '\n';
    return 0;
}

int replace(const QString &dir, const QString &query, const QString &replacement, int documents)
{
    const FileSystemService service;
    const QString source = QDir(dir).absolutePath();
    const QStringList paths
        = service.collectDocumentPaths(service.scanDirectory(QUrl::fromLocalFile(source)));
    QTemporaryDir scratch;
    const QString copy = scratch.filePath(QStringLiteral("docs"));
    for (const QString &path : paths.mid(0, documents)) {
        const QString target = copy + path.mid(source.size());
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(path, target);
    }
    WorkspaceStore store(std::make_unique<QSettings>(scratch.filePath(QStringLiteral("s.ini")),
                                                     QSettings::IniFormat),
                         scratch.filePath(QStringLiteral("drafts")));
    store.openFolder(QUrl::fromLocalFile(copy));
    store.updateSearch(query);
    while (store.isSearching())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    qsizetype hits = 0;
    const qsizetype files = store.searchResults().size();
    for (const FileSearchResults &file : store.searchResults())
        hits += file.matches.size();

    // A timer ticking as fast as it can: the widest gap between ticks is the longest stall.
    QElapsedTimer clock;
    qint64 last = 0;
    qint64 longest = 0;
    QTimer tick;
    tick.setInterval(0);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        longest = std::max(longest, now - last);
        last = now;
    });
    clock.start();
    tick.start();
    store.replaceAll(replacement);
    const qint64 called = clock.nsecsElapsed();
    longest = std::max(longest, called);
    last = called;
    while (store.isReplacing())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double written = double(clock.nsecsElapsed()) / 1e6;
    tick.stop();
    QTextStream(stdout) << "files\t" << files << "\nhits\t" << hits << "\nmessage\t"
                        << store.operationMessage() << "\nwritten_ms\t" << written
                        << "\nlongest_stall_ms\t" << double(longest) / 1e6 << '\n';
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    QTextStream err(stderr);
    const int repeat = intOption(args, QStringLiteral("--repeat"), 1);
    if (args.size() >= 3 && args.at(1) == u"scan")
        return scan(args.at(2), repeat);
    if (args.size() >= 4 && args.at(1) == u"search") {
        const qsizetype at = args.indexOf(QStringLiteral("--engine"));
        const bool unicode = at > 0 && at + 1 < args.size() && args.at(at + 1) == u"unicode";
        const SearchOptions options {args.contains(QStringLiteral("--case")),
                                     args.contains(QStringLiteral("--word")),
                                     args.contains(QStringLiteral("--regex"))};
        return search(args.at(2), args.at(3),
                      unicode ? SearchService::Engine::Unicode : SearchService::Engine::Bytes,
                      options, repeat, args.contains(QStringLiteral("--quiet")));
    }
    if (args.size() >= 5 && args.at(1) == u"replace")
        return replace(args.at(2), args.at(3), args.at(4),
                       intOption(args, QStringLiteral("--documents"), 1000));
    if (args.size() >= 4 && args.at(1) == u"quickopen")
        return quickOpen(args.at(2), args.at(3), intOption(args, QStringLiteral("--copies"), 1),
                         args.contains(QStringLiteral("--list")));
    if (args.size() >= 3 && args.at(1) == u"links")
        return links(args.at(2), repeat);
    if (args.size() >= 4 && args.at(1) == u"link")
        return link(args.at(2), args.at(3), repeat);
    err << "usage: pagewell-bench scan DIR [--repeat N]\n"
           "       pagewell-bench link DIR TARGET [--repeat N]\n"
           "       pagewell-bench links DIR [--repeat N]\n"
           "       pagewell-bench quickopen DIR QUERY [--copies N] [--list]\n"
           "       pagewell-bench search DIR QUERY [--engine bytes|unicode] [--case] [--word] "
           "[--regex] [--repeat N] [--quiet]\n"
           "       pagewell-bench replace DIR QUERY REPLACEMENT [--documents N]\n";
    return 2;
}
