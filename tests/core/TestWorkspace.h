#pragma once

#include "TestFiles.h"
#include "workspace/WorkspaceStore.h"

#include <QSettings>
#include <QTemporaryDir>

#include <memory>

// Stores and folders for tests, each on files of its own below one scratch folder: a store as a
// fresh launch makes it, on a preferences file nobody else uses.
class TestWorkspace
{
public:
    // What a test puts in the desktop's trash stays in the scratch folder, however it is run.
    TestWorkspace()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_scratch.filePath(QStringLiteral("xdg-data"))));
    }

    std::unique_ptr<WorkspaceStore> makeStore()
    {
        ++m_made;
        return std::make_unique<WorkspaceStore>(
            std::make_unique<QSettings>(
                m_scratch.filePath(QStringLiteral("settings-%1.ini").arg(m_made)),
                QSettings::IniFormat),
            draftsFolder());
    }

    // Every store of this workspace keeps its drafts here, as every launch of the application
    // shares one state folder.
    QString draftsFolder() const { return m_scratch.filePath(QStringLiteral("drafts")); }

    // A new folder holding `files` (see makeTree).
    QString folder(const QStringList &files)
    {
        const QString path = m_scratch.filePath(QStringLiteral("w%1").arg(++m_made));
        makeTree(path, files);
        return path;
    }

    QString filePath(const QString &name) const { return m_scratch.filePath(name); }

private:
    QTemporaryDir m_scratch;
    int m_made = 0;
};
