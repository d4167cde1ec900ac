#include "Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QJSEngine>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString colorSchemeKey = u"color-scheme"_s;

// The portal wraps the value in one or two variants depending on its version.
uint unwrap(QVariant value)
{
    while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

QPalette darkPalette()
{
    QPalette p;
    const QColor window(0x1E, 0x1E, 0x1E);
    const QColor base(0x26, 0x26, 0x26);
    const QColor text(0xEB, 0xEB, 0xEB);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, QColor(0x2C, 0x2C, 0x2C));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x33, 0x33, 0x33));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::Highlight, QColor(0x0A, 0x84, 0xFF));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::ToolTipBase, QColor(0x33, 0x33, 0x33));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(0x98, 0x98, 0x9D));
    p.setColor(QPalette::Light, QColor(0x48, 0x48, 0x48));
    p.setColor(QPalette::Midlight, QColor(0x3A, 0x3A, 0x3A));
    p.setColor(QPalette::Mid, QColor(0x2A, 0x2A, 0x2A));
    p.setColor(QPalette::Dark, QColor(0x12, 0x12, 0x12));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Link, QColor(0x4D, 0xA3, 0xFF));
    p.setColor(QPalette::BrightText, Qt::white);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, QColor(0x6E, 0x6E, 0x73));
    return p;
}

} // namespace

Appearance::Appearance(QObject *parent) : QObject(parent)
{
    const QByteArray forced = qgetenv("PAGEWELL_APPEARANCE");
    if (forced == "dark" || forced == "light")
        m_override = forced == "dark";

    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!m_override && bus.isConnected()) {
        QDBusMessage read = QDBusMessage::createMethodCall(portalService, portalPath,
                                                           settingsInterface, u"Read"_s);
        read << appearanceGroup << colorSchemeKey;
        // Asked without waiting: starting the portal can take a while, and the window does not
        // wait for it. Until it answers, the palette decides.
        auto *answer = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this,
                [this](QDBusPendingCallWatcher *call) {
                    const QDBusMessage reply = call->reply();
                    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()
                        && !m_portal) {
                        m_portal = darkFromColorScheme(unwrap(reply.arguments().constFirst()));
                        reevaluate();
                    }
                    call->deleteLater();
                });
        bus.connect(portalService, portalPath, settingsInterface, u"SettingChanged"_s, this,
                    SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    }
    if (qGuiApp)
        qGuiApp->installEventFilter(this);
    reevaluate();
}

Appearance *Appearance::instance()
{
    static Appearance *appearance = new Appearance(qGuiApp);
    return appearance;
}

Appearance *Appearance::create(QQmlEngine *, QJSEngine *)
{
    Appearance *appearance = instance();
    QJSEngine::setObjectOwnership(appearance, QJSEngine::CppOwnership);
    return appearance;
}

std::optional<bool> Appearance::darkFromColorScheme(uint value)
{
    if (value == 1)
        return true;
    if (value == 2)
        return false;
    return std::nullopt;
}

void Appearance::portalSettingChanged(const QString &group, const QString &key,
                                      const QDBusVariant &value)
{
    if (group != appearanceGroup || key != colorSchemeKey)
        return;
    m_portal = darkFromColorScheme(unwrap(value.variant()));
    reevaluate();
}

bool Appearance::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange && !m_override
        && !m_portal)
        reevaluate();
    return QObject::eventFilter(watched, event);
}

void Appearance::reevaluate()
{
    bool dark = false;
    if (m_override)
        dark = *m_override;
    else if (m_portal)
        dark = *m_portal;
    else if (qGuiApp)
        dark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    const bool changed = dark != m_isDark;
    m_isDark = dark;
    applyPalette();
    if (changed)
        Q_EMIT isDarkChanged();
}

// The style draws with the application palette: when the desktop asks for dark but the palette
// is light (no platform theme under X11), the palette follows the choice.
void Appearance::applyPalette()
{
    if (!qGuiApp)
        return;
    const bool paletteIsDark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    if (m_isDark == paletteIsDark)
        return;
    QGuiApplication::setPalette(m_isDark ? darkPalette() : QPalette());
}
