#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

// Files for tests, byte for byte, with their folders made as needed.
inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

// Makes `path` with `files` below it: a name ending in "/" is a folder, a file holds its own
// name as a heading.
inline void makeTree(const QString &path, const QStringList &files)
{
    QVERIFY(QDir().mkpath(path));
    for (const QString &file : files) {
        if (file.endsWith(u'/'))
            QVERIFY(QDir().mkpath(path + u'/' + file));
        else
            writeFile(path + u'/' + file, "# " + file.toUtf8() + '\n');
    }
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A file-size limit on this process for as long as it lives, as a full disk would stop a write
// part way: the write fails with EFBIG instead of a signal ending the process.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &m_saved), 0);
        rlimit small = m_saved;
        small.rlim_cur = bytes;
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_saved); }

private:
    rlimit m_saved;
};
