#include "NavigationHistory.h"

void NavigationHistory::clear()
{
    m_paths.clear();
    m_recent.clear();
    m_index = -1;
}

void NavigationHistory::touch(const QString &path)
{
    m_recent.removeOne(path);
    m_recent.prepend(path);
}

void NavigationHistory::arrive(qsizetype index)
{
    m_index = index;
    touch(m_paths.at(index));
}

void NavigationHistory::visit(const QString &path)
{
    m_paths.resize(m_index + 1);
    if (m_paths.isEmpty() || m_paths.last() != path)
        m_paths.append(path);
    m_index = m_paths.size() - 1;
    touch(path);
}

qsizetype NavigationHistory::find(int step, const std::function<bool(const QString &)> &exists)
{
    for (qsizetype i = m_index + step; i >= 0 && i < m_paths.size(); i += step) {
        if (exists(m_paths.at(i)))
            return i;
        m_paths.removeAt(i);
        if (i < m_index)
            --m_index;
        if (step > 0)
            --i;
    }
    return -1;
}

void NavigationHistory::replacePaths(const std::function<QString(const QString &)> &moved)
{
    for (QString &path : m_paths)
        path = moved(path);
    for (QString &path : m_recent)
        path = moved(path);
}
