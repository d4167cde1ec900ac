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

// The matches of a hit as "[start,end)..." in the untrimmed line.
QString rangesText(const FileSearchResults &file, const SearchResult &hit)
{
    QString text;
    for (const auto &[start, end] : file.rangesOf(hit))
        text += u"[%1,%2)"_s.arg(start).arg(end);
    return text;
}

// What a search returns, without the random ids: "relativePath:line:content" per hit, and with
// `ranges`, where its matches are.
QStringList hits(const QList<FileSearchResults> &results, bool ranges = false)
{
    QStringList list;
    for (const FileSearchResults &file : results) {
        for (const SearchResult &hit : file.matches) {
            list.append(u"%1:%2:%3"_s.arg(hit.relativePath).arg(hit.lineNumber).arg(hit.lineContent)
                        + (ranges ? u' ' + QString::number(hit.indent) + rangesText(file, hit)
                                  : QString()));
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
    QList<FileSearchResults> search(const QString &query,
                                    SearchService::Engine engine = SearchService::Engine::Bytes,
                                    SearchOptions options = {}) const
    {
        const FileItem root = FileSystemService().scanDirectory(url());
        return SearchService(engine).search(query, root, url(), nullptr, options);
    }
    // Searched by both engines, which must agree to the match; the hits with their ranges.
    QStringList agreed(const QString &query, SearchOptions options) const
    {
        const QStringList bytes = hits(search(query, SearchService::Engine::Bytes, options), true);
        const QStringList unicode
            = hits(search(query, SearchService::Engine::Unicode, options), true);
        if (bytes != unicode)
            qWarning() << query << bytes << unicode;
        return bytes == unicode ? bytes : QStringList {u"ENGINES DISAGREE"_s};
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
            const QStringList bytes = hits(w.search(query, SearchService::Engine::Bytes), true);
            const QStringList unicode = hits(w.search(query, SearchService::Engine::Unicode), true);
            QVERIFY2(bytes == unicode, qPrintable(query));
            nonEmpty += !bytes.isEmpty();
        }
        QCOMPARE(nonEmpty, queries.size());
        // Folding finds what only folding can: the Kelvin sign for "k", long s for "s".
        QVERIFY(hits(w.search(u"kelvin \u212A k"_s)).size() == 2);
        QVERIFY(hits(w.search(u"LONG \u017F S"_s)).size() == 2);
        QVERIFY(hits(w.search(u"resume"_s)).size() == 2); // "resume" itself; accents count
    }

    void hitsCarryWhereTheirMatchesAre()
    {
        Workspace w;
        // Ranges count UTF-16 units of the untrimmed line: an emoji is two, a tab one.
        w.add(u"a.md"_s, "# Title\n\t  un coffre 😀 Coffre, coffres\r\nfin\n");
        QCOMPARE(w.agreed(u"coffre"_s, {}),
                 QStringList {u"a.md:2:un coffre 😀 Coffre, coffres 3[6,12)[16,22)[24,30)"_s});
        // Hits keep their matches in bytes and count units when shown: characters of two, three
        // and four bytes before and between matches, and U+FEFF inside a line, count right.
        w.add(u"b.md"_s,
              "  é€😀\xEF\xBB\xBF"
              "coffre ç𝄞coffre\n");
        QCOMPARE(w.agreed(u"coffre"_s, {}).last(),
                 u"b.md:1:é€😀\uFEFFcoffre ç𝄞coffre 2[7,13)[17,23)"_s);
        const SearchOptions expression {false, false, true};
        QCOMPARE(w.agreed(u"c.ff"_s, expression).last(),
                 u"b.md:1:é€😀\uFEFFcoffre ç𝄞coffre 2[7,11)[17,21)"_s);
        // Found by its name alone: nothing to highlight.
        QCOMPARE(w.agreed(u"a.md"_s, {}), QStringList {u"a.md:1:a.md 0"_s});
    }

    void togglesNarrowThePlainRule()
    {
        Workspace w;
        w.add(u"a.md"_s,
              "Le Coffre et le coffre-fort.\n"
              "Des coffres, un _coffre_ et (coffre).\n"
              "# Titre\r\n"
              "fin de ligne coffre\r\n"
              "Straße STRASSE \u212Aelvin\n");
        const SearchOptions off;
        const SearchOptions matchCase {true, false, false};
        const SearchOptions word {false, true, false};
        const SearchOptions expression {false, false, true};

        // All off is the plain rule, engines agreeing on every range.
        QCOMPARE(
            w.agreed(u"COFFRE"_s, off),
            QStringList({u"a.md:1:Le Coffre et le coffre-fort. 0[3,9)[16,22)"_s,
                         u"a.md:2:Des coffres, un _coffre_ et (coffre). 0[4,10)[17,23)[29,35)"_s,
                         u"a.md:4:fin de ligne coffre 0[13,19)"_s}));
        QCOMPARE(w.agreed(u"coffre"_s, matchCase).size(), 3);
        QCOMPARE(w.agreed(u"Coffre"_s, matchCase),
                 QStringList {u"a.md:1:Le Coffre et le coffre-fort. 0[3,9)"_s});
        QCOMPARE(w.agreed(u"kelvin"_s, matchCase), QStringList());
        QCOMPARE(w.agreed(u"kelvin"_s, off).size(), 1); // the Kelvin sign folds to k

        // A whole word: a hyphen or a bracket ends a word, an underscore or a letter does not.
        QCOMPARE(w.agreed(u"coffre"_s, word),
                 QStringList({u"a.md:1:Le Coffre et le coffre-fort. 0[3,9)[16,22)"_s,
                              u"a.md:2:Des coffres, un _coffre_ et (coffre). 0[29,35)"_s,
                              u"a.md:4:fin de ligne coffre 0[13,19)"_s}));
        QCOMPARE(w.agreed(u"straße"_s, word).size(), 1);
        QCOMPARE(w.agreed(u"STRASS"_s, word), QStringList());
        QCOMPARE(w.agreed(u"coffre"_s, {true, true, false}).value(0),
                 u"a.md:1:Le Coffre et le coffre-fort. 0[16,22)"_s);

        // An expression, line by line: ^ and $ at each line's ends, CR LF included; groups and
        // alternatives; case ignored unless asked for.
        QCOMPARE(w.agreed(u"^# \\w+$"_s, expression), QStringList {u"a.md:3:# Titre 0[0,7)"_s});
        QCOMPARE(w.agreed(u"coffre$"_s, expression),
                 QStringList {u"a.md:4:fin de ligne coffre 0[13,19)"_s});
        QCOMPARE(w.agreed(u"c(o)ffres?"_s, expression).size(), 3);
        QCOMPARE(w.agreed(u"C[a-z]+e"_s, {true, false, true}),
                 QStringList {u"a.md:1:Le Coffre et le coffre-fort. 0[3,9)"_s});
        QCOMPARE(w.agreed(u"coffres?"_s, {false, true, true}).size(), 3);
        // What only matches across a line end, or only an empty string, is no hit.
        QCOMPARE(w.agreed(u"fort\\.\\s+Des"_s, expression), QStringList());
        QCOMPARE(w.agreed(u"x*"_s, expression), QStringList());
        // A name matches by the same rule.
        QCOMPARE(w.agreed(u"^a\\.md$"_s, expression), QStringList {u"a.md:1:a.md 0"_s});

        // An invalid expression searches nothing.
        QVERIFY(!SearchService::pattern(u"(coffre"_s, expression).isValid());
        QCOMPARE(w.search(u"(coffre"_s, SearchService::Engine::Bytes, expression).size(), 0);
        QVERIFY(SearchService::pattern(u"(coffre"_s, off).isValid());
        QCOMPARE(w.agreed(u"(coffre)"_s, off).size(), 1);
    }

    void patternReplacesOnlyTheMatches()
    {
        int count = 0;
        const auto replaced = [&count](const QString &query, SearchOptions options,
                                       const QString &text, const QString &replacement) {
            count = 0;
            return SearchService::pattern(query, options).replacedInText(text, replacement, &count);
        };
        // Byte-order mark, every kind of line end and the final newline stay.
        const QString text = u"\uFEFFun chat\r\nle Chat, chaton\rchat\u2028x\n"_s;
        QCOMPARE(replaced(u"chat"_s, {}, text, u"chien"_s),
                 u"\uFEFFun chien\r\nle chien, chienon\rchien\u2028x\n"_s);
        QCOMPARE(count, 4);
        QCOMPARE(replaced(u"chat"_s, {false, true, false}, text, u"$1"_s),
                 u"\uFEFFun $1\r\nle $1, chaton\r$1\u2028x\n"_s);
        QCOMPARE(count, 3);
        // Groups with an expression; a group the expression lacks stays as written.
        QCOMPARE(replaced(u"(\\w+) (\\w+)"_s, {false, false, true}, u"un chat\nle chien\n"_s,
                          u"$2 $1 [$&] $3 $$ $"_s),
                 u"chat un [un chat] $3 $$ $\nchien le [le chien] $3 $$ $\n"_s);
        QCOMPARE(count, 2);
        // ^ anchors to each line; nothing matched, nothing changes.
        QCOMPARE(replaced(u"^"_s + u"l"_s, {false, false, true}, u"la\r\nle\n"_s, u"L"_s),
                 u"La\r\nLe\n"_s);
        QCOMPARE(replaced(u"zz"_s, {}, text, u"x"_s), text);
        QCOMPARE(count, 0);
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
            const char *found = matcher.find(bytes.constData(), bytes.constData() + bytes.size());
            const qsizetype at = text.indexOf(query, 0, Qt::CaseInsensitive);
            QVERIFY2((found != nullptr) == (at >= 0), qPrintable(u"%1 in %2"_s.arg(query, text)));
            if (found) {
                // The same match, to its end.
                const char *end = matcher.matchEnd(found, bytes.constData() + bytes.size());
                QCOMPARE(QString::fromUtf8(found, end - found).size(), query.size());
                QCOMPARE(QString::fromUtf8(bytes.constData(), found - bytes.constData()).size(),
                         at);
            }
            // Case-sensitive, only the spelling itself.
            const Utf8Matcher exact(query, true);
            QCOMPARE(exact.find(bytes.constData(), bytes.constData() + bytes.size()) != nullptr,
                     text.contains(query, Qt::CaseSensitive));
        }
    }
};

QTEST_GUILESS_MAIN(TestSearchService)
#include "tst_searchservice.moc"
