#include "TestFiles.h"
#include "services/SearchService.h"
#include "services/Utf8Matcher.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

// What a search returns, without the random ids: "relativePath:line:content" per hit.
QStringList hits(const QList<FileSearchResults> &results)
{
    QStringList list;
    for (const FileSearchResults &file : results) {
        for (const SearchResult &hit : file.matches) {
            list.append(
                u"%1:%2:%3"_s.arg(hit.relativePath).arg(hit.lineNumber).arg(hit.lineContent));
            if (hit.fileURL != file.fileURL || hit.fileName != file.fileName
                || hit.relativePath != file.relativePath)
                list.append(u"MISMATCH"_s);
        }
    }
    return list;
}

struct Workspace
{
    QTemporaryDir dir;
    QUrl url() const { return QUrl::fromLocalFile(dir.path()); }
    QList<FileSearchResults>
    search(const QString &query, SearchService::Engine engine = SearchService::Engine::Bytes) const
    {
        const FileItem root = FileSystemService().scanDirectory(url());
        return SearchService(engine).search(query, root, url());
    }
    void add(const QString &path, const QByteArray &bytes) const
    {
        writeFile(dir.filePath(path), bytes);
    }
};

// Texts that make case-insensitive matching hard: folds that change the UTF-8 length (the Kelvin
// sign and long s fold to ASCII), letters with several variants, and no decomposition.
const QStringList trickyLines = {
    u"Straße STRASSE strasse ẞ"_s,
    u"İstanbul ISTANBUL ıstanbul istanbul"_s,
    u"Kelvin \u212A K k Ohm \u2126 Ω ω"_s,
    u"long \u017F s S ß ss"_s,
    u"σοφία ΣΟΦΊΑ ς Σ"_s,
    u"résumé RÉSUMÉ resume Résumé"_s,
    u"emoji 😀 \U0001F600 🙂 ǅ ǆ Ǆ"_s,
    u"ﬀ ff FF ﬁ Å \u212B å"_s,
    u"e\u0301 é E\u0301 ÉCOLE école"_s,
    u"θ ϑ Θ ϴ µ μ Μ"_s,
};

} // namespace

class TestSearchService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsNamesAndLines()
    {
        Workspace w;
        w.add(u"guide/setup.md"_s,
              "# Setup\n\n    - step one to INSTALL\n\tInstall\tagain \nnothing\n");
        w.add(u"Install.md"_s, "# Mise en place\nrien ici\n");
        w.add(u"install-notes.md"_s, "install first\n");
        w.add(u"install.txt"_s, "install\n");
        w.add(u"node_modules/install.md"_s, "install\n");
        w.add(u".hidden/install.md"_s, "install\n");

        const QList<FileSearchResults> results = w.search(u"  Install "_s);
        // "-" sorts before "." in the collation order of names.
        QCOMPARE(hits(results),
                 (QStringList {u"install-notes.md:1:install first"_s, u"Install.md:1:Install.md"_s,
                               u"guide/setup.md:3:- step one to INSTALL"_s,
                               u"guide/setup.md:4:Install\tagain"_s}));
        QCOMPARE(results.at(2).matches.at(0).matchTerm, u"Install"_s);
        QCOMPARE(results.at(2).fileName, u"setup.md"_s);
        QCOMPARE(results.at(2).fileURL, QUrl::fromLocalFile(w.dir.filePath(u"guide/setup.md"_s)));
        QVERIFY(results.at(0).matches.at(0).id != results.at(1).matches.at(0).id);

        QVERIFY(w.search(u" \t\n "_s).isEmpty());
    }

    void countsEveryKindOfLineEnd()
    {
        Workspace w;
        // A CR LF pair ends one line, as in the editor; a CR or LF alone ends one too, and
        // LF CR is two line ends.
        w.add(u"crlf.md"_s, "one\r\ntwo\r\nthree match\r\n");
        w.add(u"lone.md"_s, "a\rb\n\rc\r\r\nmatch\r\n");
        // Å (C3 85) ends no line, though NEL (C2 85) ends in the same byte.
        w.add(u"mixed.md"_s,
              "a\rb\x0Bg\x0Ch\xC2\x85i\xC3\x85\xE2\x80\xA8j\xE2\x80\xA9match\nmatch");
        w.add(u"bom.md"_s,
              "\xEF\xBB\xBF"
              "match at the start\n");
        w.add(u"trailing.md"_s, "x\nmatch  \t");
        QCOMPARE(hits(w.search(u"match"_s)),
                 (QStringList {u"bom.md:1:match at the start"_s, u"crlf.md:3:three match"_s,
                               u"lone.md:6:match"_s, u"mixed.md:7:match"_s, u"mixed.md:8:match"_s,
                               u"trailing.md:2:match"_s}));
    }

    void searchesOnlyDocuments()
    {
        Workspace w;
        w.add(u"logo.svg"_s, "<svg viewBox=\"0 0 10 10\"><text>Pagewell</text></svg>");
        w.add(u"flow.excalidraw"_s, "{\"text\": \"pagewell flow\"}");
        w.add(u"pagewell.txt"_s, "pagewell");
        w.add(u"pagewell.png"_s, "pagewell");
        QCOMPARE(
            hits(w.search(u"pagewell"_s)),
            (QStringList {u"flow.excalidraw:1:{\"text\": \"pagewell flow\"}"_s,
                          u"logo.svg:1:<svg viewBox=\"0 0 10 10\"><text>Pagewell</text></svg>"_s}));
    }

    void skipsWhatIsNotARegularFile()
    {
        Workspace w;
        w.add(u"real.md"_s, "word\n");
        QCOMPARE(::mkfifo(QFile::encodeName(w.dir.filePath(u"pipe.md"_s)).constData(), 0600), 0);
        QVERIFY(QFile::link(u"/dev/zero"_s, w.dir.filePath(u"zero.md"_s)));
        QCOMPARE(hits(w.search(u"word"_s)), QStringList {u"real.md:1:word"_s});
        QCOMPARE(hits(w.search(u"pipe"_s)), QStringList {u"pipe.md:1:pipe.md"_s});
    }

    void invalidUtf8IsFoundByNameOnly()
    {
        Workspace w;
        w.add(u"café.md"_s, "caf\xE9 au lait\n");
        w.add(u"notes.md"_s, "du caf\xE9\n");
        QCOMPARE(hits(w.search(u"caf"_s)), QStringList {u"café.md:1:café.md"_s});
    }

    void cancelledSearchStops()
    {
        Workspace w;
        for (int i = 0; i < 50; ++i)
            w.add(u"doc%1.md"_s.arg(i), "word\n");
        const FileItem root = FileSystemService().scanDirectory(w.url());
        std::atomic_bool cancelled {true};
        QVERIFY(SearchService().search(u"word"_s, root, w.url(), &cancelled).isEmpty());
        cancelled = false;
        QCOMPARE(SearchService().search(u"word"_s, root, w.url(), &cancelled).size(), 50);
    }

    void enginesAgreeOnHardText()
    {
        Workspace w;
        for (qsizetype i = 0; i < trickyLines.size(); ++i)
            w.add(u"t%1.md"_s.arg(i),
                  trickyLines.at(i).toUtf8() + "\r\n" + trickyLines.at(i).toUtf8());
        const QStringList queries
            = u"k|K|\u212A|s|S|\u017F|ss|straße|STRASSE|ẞ|i|İ|ı|I|σ|Σ|ς|é|É|RESUME|😀|ǅ|ǆ|ﬀ|ff|Ω|ω|å|\u212B|\u0301|e\u0301|θ|ϑ|µ|μ|ohm ω|kelvin \u212a|LONG ſ"_s
                  .split(u'|');
        int nonEmpty = 0;
        for (const QString &query : queries) {
            const QStringList bytes = hits(w.search(query, SearchService::Engine::Bytes));
            const QStringList unicode = hits(w.search(query, SearchService::Engine::Unicode));
            QVERIFY2(bytes == unicode, qPrintable(query));
            nonEmpty += !bytes.isEmpty();
        }
        QCOMPARE(nonEmpty, queries.size());
        // Folding finds what only folding can: the Kelvin sign for "k", long s for "s".
        QVERIFY(hits(w.search(u"kelvin \u212A k"_s)).size() == 2);
        QVERIFY(hits(w.search(u"LONG \u017F S"_s)).size() == 2);
        QVERIFY(hits(w.search(u"resume"_s)).size() == 2); // "resume" itself; accents count
    }

    void matcherAgreesWithQStringOnRandomText()
    {
        // Random text over an alphabet of awkward characters, and queries cut from it with their
        // case changed: the byte matcher must answer as QString does, every time.
        const QList<char32_t> alphabet
            = {'a',     'k',   'K',   0x212A, 's',   'S',   0x17F, 0xDF,  0x1E9E,
               0x130,   0x131, 'i',   'I',    0x3C3, 0x3C2, 0x3A3, 0xE9,  0xC9,
               0x1F600, 0x1C5, 0x1C6, 0x2126, 0x3C9, ' ',   '\t',  0xFB00};
        QRandomGenerator random(1234);
        const auto randomText = [&](int length) {
            QString text;
            for (int i = 0; i < length; ++i)
                text.append(QString::fromUcs4(&alphabet[random.bounded(int(alphabet.size()))], 1));
            return text;
        };
        for (int round = 0; round < 3000; ++round) {
            const QString text = randomText(random.bounded(1, 40));
            QString query;
            if (round % 3 == 0) {
                query = randomText(random.bounded(1, 4));
            } else {
                const QList<uint> code = text.toUcs4();
                const int from = random.bounded(int(code.size()));
                const int length = random.bounded(1, int(code.size()) - from + 1);
                for (const char32_t c : code.mid(from, length)) {
                    const std::vector<char32_t> variants = Utf8Matcher::caseVariants(c);
                    const char32_t pick = variants[random.bounded(int(variants.size()))];
                    query.append(QString::fromUcs4(&pick, 1));
                }
            }
            const QByteArray bytes = text.toUtf8();
            const Utf8Matcher matcher(query);
            QVERIFY(matcher.isUsable());
            const bool byBytes
                = matcher.find(bytes.constData(), bytes.constData() + bytes.size()) != nullptr;
            QVERIFY2(byBytes == text.contains(query, Qt::CaseInsensitive),
                     qPrintable(u"%1 in %2"_s.arg(query, text)));
        }
    }
};

QTEST_GUILESS_MAIN(TestSearchService)
#include "tst_searchservice.moc"
