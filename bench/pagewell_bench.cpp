// Drives Pagewell's own services the way the application does, for benchmarks and for scripts
// that compare results.
//   pagewell-bench scan DIR [--repeat N]   entries in the sorted tree and the median scan time
#include "services/FileSystemService.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>
#include <QUrl>

#include <algorithm>
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

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    QTextStream err(stderr);
    if (args.size() >= 3 && args.at(1) == u"scan") {
        int repeat = 1;
        const qsizetype at = args.indexOf(QStringLiteral("--repeat"));
        if (at > 0 && at + 1 < args.size())
            repeat = std::max(1, args.at(at + 1).toInt());
        return scan(args.at(2), repeat);
    }
    err << "usage: pagewell-bench scan DIR [--repeat N]\n";
    return 2;
}
