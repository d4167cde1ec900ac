#include "NameCollator.h"

NameCollator::NameCollator() : m_collator(collationLocale())
{
    m_collator.setNumericMode(true);
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    m_collator.setIgnorePunctuation(false);
}

QLocale NameCollator::collationLocale()
{
    const QLocale system = QLocale::system();
    if (system.language() == QLocale::C || system.language() == QLocale::AnyLanguage)
        return QLocale(QLocale::English, QLocale::UnitedStates);
    return system;
}
