#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// The documents opened in a window, in order, whatever opened them, and where in that list the
// window stands. Going back or forth passes over documents that no longer exist, and forgets
// them; opening a document after going back drops the ones ahead.
class NavigationHistory
{
public:
    bool canGoBack() const { return m_index > 0; }
    bool canGoForward() const { return m_index + 1 < m_paths.size(); }

    void clear();
    // A document was opened: it follows the one shown now, unless it is that one.
    void visit(const QString &path);
    // The nearest entry `step` (-1 or 1) away from the one shown whose path `exists` accepts,
    // or -1; the entries passed over are forgotten. Nothing moves until arrive().
    qsizetype find(int step, const std::function<bool(const QString &)> &exists);
    const QString &at(qsizetype index) const { return m_paths.at(index); }
    // The entry found was opened: it is the one shown now.
    void arrive(qsizetype index);
    // Every document opened in the window, once each, the most recent first (going back and
    // forth included).
    const QStringList &recent() const { return m_recent; }
    // Entries follow a renamed or moved document.
    void replacePaths(const std::function<QString(const QString &)> &moved);

private:
    void touch(const QString &path);

    QStringList m_paths; // oldest first
    QStringList m_recent;
    qsizetype m_index = -1;
};
