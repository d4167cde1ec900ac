#pragma once

#include <QObject>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

// What the editor page sees of the native side through the web channel, as "editorBridge": one
// method to post a message, and nothing else (no state of the application reaches the page).
class EditorBridge : public QObject
{
    Q_OBJECT
    QML_ELEMENT

public:
    using QObject::QObject;

    Q_INVOKABLE void postMessage(const QVariant &message) { Q_EMIT messageReceived(message); }

Q_SIGNALS:
    void messageReceived(const QVariant &message);
};
