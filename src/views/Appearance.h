#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

// Light or dark, as the desktop says: the freedesktop appearance setting through the desktop
// portal (and its change signal), else the lightness of the palette's window colour. The views
// and the editor page both follow `isDark`. PAGEWELL_APPEARANCE=light|dark overrides it.
class Appearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY isDarkChanged)

public:
    explicit Appearance(QObject *parent = nullptr);

    static Appearance *instance();
    // QML shares the application's one instance, so the editor host and the views agree.
    static Appearance *create(QQmlEngine *, QJSEngine *);
    bool isDark() const { return m_isDark; }

    // The portal's color-scheme value: 1 prefers dark, 2 prefers light, 0 has no preference.
    static std::optional<bool> darkFromColorScheme(uint value);

Q_SIGNALS:
    void isDarkChanged();

private Q_SLOTS:
    void portalSettingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void reevaluate();
    bool eventFilter(QObject *watched, QEvent *event) override;
    void applyPalette();

    std::optional<bool> m_override;
    std::optional<bool> m_portal;
    bool m_isDark = false;
};
