// Runs one QML test file of the views (given with -input) against the application's one store,
// on temporary folders and a preferences file of the test's own.
#include "../core/TestFiles.h"
#include "workspace/WorkspaceStore.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QTemporaryDir>
#include <QtQuickTest>
#include <QtWebEngineQuick>

Q_IMPORT_QML_PLUGIN(PagewellPlugin)
Q_IMPORT_QML_PLUGIN(Pagewell_EditorPlugin)

using namespace Qt::StringLiterals;

// Folders with files for the QML tests.
class Fixture : public QObject
{
    Q_OBJECT

public:
    explicit Fixture(QObject *parent = nullptr) : QObject(parent) { }

    // A new folder holding `files` (a name ending in "/" is a folder, a file holds its name).
    Q_INVOKABLE QString makeFolder(const QStringList &files)
    {
        const QString path = m_dir.filePath(u"f%1"_s.arg(++m_count));
        makeTree(path, files);
        return path;
    }
    Q_INVOKABLE bool exists(const QString &path) const { return QFileInfo::exists(path); }
    Q_INVOKABLE QUrl url(const QString &path) const { return QUrl::fromLocalFile(path); }
    Q_INVOKABLE void write(const QString &path, const QString &text) const
    {
        writeFile(path, text.toUtf8());
    }
    Q_INVOKABLE QString read(const QString &path) const
    {
        return QString::fromUtf8(readFile(path));
    }

private:
    QTemporaryDir m_dir;
    int m_count = 0;
};

class Setup : public QObject
{
    Q_OBJECT

public:
    Setup()
    {
        // The store reads its preferences when QML first uses it: from here, not the user's.
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config.path()));
        qputenv("XDG_STATE_HOME", QFile::encodeName(m_config.path()));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_config.path()));
        // The editor pane holds the web engine; it must be set up before the application.
        QtWebEngineQuick::initialize();
    }

public Q_SLOTS:
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(u"qrc:/qt/qml"_s);
        engine->rootContext()->setContextProperty(u"fixture"_s, &m_fixture);
    }

private:
    QTemporaryDir m_config;
    Fixture m_fixture;
};

QUICK_TEST_MAIN_WITH_SETUP(pagewell_views, Setup)
#include "tst_views.moc"
