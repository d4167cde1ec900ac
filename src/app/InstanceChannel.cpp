#include "InstanceChannel.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>

#include <unistd.h>

using namespace Qt::StringLiterals;

InstanceChannel::InstanceChannel(const QString &name, QObject *parent)
    : QObject(parent), m_name(name)
{
    connect(&m_server, &QLocalServer::newConnection, this, &InstanceChannel::accept);
}

QString InstanceChannel::defaultName()
{
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QDir::tempPath();
    // The user's id keeps users apart where the folder is shared; the display keeps two
    // sessions of one user apart.
    QString display = qEnvironmentVariable("WAYLAND_DISPLAY", qEnvironmentVariable("DISPLAY"));
    display.replace(u'/', u'_');
    return folder + u"/pagewell-%1%2.socket"_s.arg(::getuid()).arg(display);
}

bool InstanceChannel::handOver(const QUrl &url, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    // One line: the URL, encoded, so any path travels whole.
    socket.write(url.toEncoded() + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    // The running instance answers once it has the request.
    return socket.waitForReadyRead(timeoutMs) && socket.readAll().startsWith("ok");
}

bool InstanceChannel::listen()
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (m_server.listen(m_name))
        return true;
    // Nobody answered handOver(), so a socket file still there was left by a crash.
    QLocalServer::removeServer(m_name);
    return m_server.listen(m_name);
}

void InstanceChannel::accept()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine())
                return;
            const QByteArray line = socket->readLine().trimmed();
            socket->write("ok\n");
            socket->flush();
            Q_EMIT openRequested(QUrl::fromEncoded(line));
        });
    }
}
