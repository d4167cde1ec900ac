#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// Path texts the views show.
class PathNames : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // The last component of a file URL made from `path` ("/w/docs/" gives "docs").
    Q_INVOKABLE QString lastComponent(const QString &path) const;
    // The path of a file URL, without a trailing slash; empty for no URL.
    Q_INVOKABLE QString fromUrl(const QUrl &url) const;
    Q_INVOKABLE QUrl toUrl(const QString &path) const;
};
