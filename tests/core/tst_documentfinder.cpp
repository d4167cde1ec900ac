#include "services/FuzzyMatcher.h"
#include "workspace/DocumentFinder.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString root = u"/docs"_s;

QStringList absolute(const QStringList &relative)
{
    QStringList paths;
    for (const QString &path : relative)
        paths.append(root + u'/' + path);
    return paths;
}

QStringList relative(const QStringList &paths)
{
    QStringList list;
    for (const QString &path : paths)
        list.append(path.mid(root.size() + 1));
    return list;
}

} // namespace

class TestDocumentFinder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ranksAsOneLooksForAFile_data()
    {
        QTest::addColumn<QStringList>("documents");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("expected");

        const QStringList guide = {u"guide/install.md"_s,       u"api/index.md"_s,
                                   u"guide/index.md"_s,         u"Télécharger et installer.md"_s,
                                   u"notes/instances/log.md"_s, u"README.md"_s};
        // Letters in the name, at its start, beat letters in the folders; accents and case
        // do not count.
        QTest::newRow("name first")
            << guide << u"instal"_s
            << QStringList {u"guide/install.md"_s, u"Télécharger et installer.md"_s,
                            u"notes/instances/log.md"_s};
        QTest::newRow("folders and name")
            << guide << u"gdinst"_s << QStringList {u"guide/install.md"_s};
        QTest::newRow("same names told apart by the folder")
            << guide << u"apiindex"_s << QStringList {u"api/index.md"_s};
        QTest::newRow("accents and case")
            << guide << u"TELECH"_s << QStringList {u"Télécharger et installer.md"_s};
        QTest::newRow("name before folder")
            << guide << u"inst"_s
            << QStringList {u"guide/install.md"_s, u"Télécharger et installer.md"_s,
                            u"notes/instances/log.md"_s};
        // A run at a word's start beats the same letters scattered.
        QTest::newRow("runs") << QStringList {u"a/mise-en-scene.md"_s, u"a/mesure.md"_s} << u"mes"_s
                              << QStringList {u"a/mesure.md"_s, u"a/mise-en-scene.md"_s};
        QTest::newRow("word starts")
            << QStringList {u"b/cocotte-freezer.md"_s, u"b/coffre-fort.md"_s} << u"cf"_s
            << QStringList {u"b/coffre-fort.md"_s, u"b/cocotte-freezer.md"_s};
        QTest::newRow("ligatures and sharp s")
            << QStringList {u"œuvre.md"_s, u"Straße.md"_s, u"ouvrir.md"_s} << u"oeuv"_s
            << QStringList {u"œuvre.md"_s};
        QTest::newRow("sharp s spelled out")
            << QStringList {u"Straße.md"_s} << u"strasse"_s << QStringList {u"Straße.md"_s};
        QTest::newRow("capitals start words")
            << QStringList {u"x/getStarted.md"_s, u"x/gastronomes.md"_s} << u"gs"_s
            << QStringList {u"x/getStarted.md"_s, u"x/gastronomes.md"_s};
        QTest::newRow("shorter path on a tie")
            << QStringList {u"deep/er/index.md"_s, u"z/index.md"_s, u"index.md"_s} << u"index"_s
            << QStringList {u"index.md"_s, u"z/index.md"_s, u"deep/er/index.md"_s};
        QTest::newRow("spaces typed are ignored")
            << QStringList {u"Créer un coffre.md"_s, u"coffre/créer.md"_s} << u"creer coffre"_s
            << QStringList {u"Créer un coffre.md"_s};
        QTest::newRow("no match") << guide << u"zzz"_s << QStringList {};
    }

    void ranksAsOneLooksForAFile()
    {
        QFETCH(QStringList, documents);
        QFETCH(QString, query);
        QFETCH(QStringList, expected);
        DocumentFinder finder;
        finder.setDocuments(absolute(documents), root);
        QCOMPARE(relative(finder.find(query, {})), expected);
    }

    void recentDocumentsBreakTiesAndFillAnEmptyQuery()
    {
        DocumentFinder finder;
        finder.setDocuments(absolute({u"api/index.md"_s, u"guide/index.md"_s, u"notes.md"_s}),
                            root);
        // Equal scores and lengths: the one opened last comes first.
        QCOMPARE(relative(finder.find(u"index"_s, absolute({u"guide/index.md"_s}))),
                 (QStringList {u"guide/index.md"_s, u"api/index.md"_s}));
        QCOMPARE(relative(finder.find(u"index"_s, {})),
                 (QStringList {u"api/index.md"_s, u"guide/index.md"_s}));
        // An empty field: the documents opened, most recent first, those gone left out.
        const QStringList recent = {root + u"/notes.md"_s, u"/elsewhere/x.md"_s,
                                    root + u"/gone.md"_s, root + u"/api/index.md"_s};
        QCOMPARE(relative(finder.find(u"  "_s, recent)),
                 (QStringList {u"notes.md"_s, u"api/index.md"_s}));
        QCOMPARE(finder.relativePath(root + u"/api/index.md"_s), u"api/index.md"_s);
    }

    void typingOnNarrowsToWhatAFreshSearchFinds()
    {
        // Each key only looks at what the previous query matched; the answer must be what a
        // finder that never saw the previous keys gives, also after a key is taken back.
        QRandomGenerator random(7);
        const QString letters = u"abcdeéiostu/-"_s;
        QStringList documents;
        for (int i = 0; i < 2000; ++i) {
            QString path;
            const int length = random.bounded(4, 24);
            for (int c = 0; c < length; ++c)
                path.append(letters.at(random.bounded(int(letters.size()))));
            documents.append(path + u".md"_s);
        }
        DocumentFinder typing;
        typing.setDocuments(absolute(documents), root);
        int nonEmpty = 0;
        for (int round = 0; round < 40; ++round) {
            QString query;
            for (int key = 0; key < 6; ++key) {
                if (key == 4 && round % 3 == 0)
                    query.chop(1); // taken back
                else
                    query.append(letters.at(random.bounded(10)));
                DocumentFinder fresh;
                fresh.setDocuments(absolute(documents), root);
                const QStringList found = typing.find(query, {});
                QCOMPARE(found, fresh.find(query, {}));
                nonEmpty += !found.isEmpty() && found.size() < documents.size();
            }
        }
        QVERIFY(nonEmpty > 60);
    }

    void scoresFavourTheName()
    {
        const FuzzyMatcher matcher(u"log"_s);
        const int inName = matcher.score(FuzzyMatcher::fold(u"x/changelog.md"));
        const int inFolders = matcher.score(FuzzyMatcher::fold(u"logs/index.md"));
        QVERIFY(inName >= FuzzyMatcher::nameTier);
        QVERIFY(inFolders >= 0 && inFolders < FuzzyMatcher::nameTier);
        QCOMPARE(matcher.score(FuzzyMatcher::fold(u"gol.md")), -1);
    }
};

QTEST_GUILESS_MAIN(TestDocumentFinder)
#include "tst_documentfinder.moc"
