#pragma once

#include <QCollator>
#include <QLocale>
#include <QString>

// The order in which names are shown: case-insensitive, runs of digits compared by value
// ("file2" before "file10"), locale-aware. Not to be shared between threads: give each thread
// its own instance.
class NameCollator
{
public:
    NameCollator();

    // The user's locale when it is a real one; under the C locale (CI, containers), where the
    // system collation would ignore numeric mode, a fixed English locale.
    static QLocale collationLocale();

    int compare(QStringView a, QStringView b) const { return m_collator.compare(a, b); }
    bool lessThan(QStringView a, QStringView b) const { return compare(a, b) < 0; }
    // Keys that compare as the names do, for sorting long lists.
    QCollatorSortKey sortKey(const QString &name) const { return m_collator.sortKey(name); }

private:
    QCollator m_collator;
};
