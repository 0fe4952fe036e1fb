#include "strangerhost.h"

#include "fixtures.h"

#include <QHostAddress>
#include <QTcpSocket>

namespace kestrine::testing {

StrangerHost::StrangerHost(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &StrangerHost::accept);
}

bool StrangerHost::listen()
{
    return m_server.listen(QHostAddress::LocalHost);
}

QString StrangerHost::address() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_server.serverPort());
}

void StrangerHost::forget()
{
    m_contacts = 0;
    m_requestLines.clear();
}

QByteArray StrangerHost::hostileSeed() const
{
    return fixtures::read(QStringLiteral("gitea/hostile-seed.json"))
        .replace("STRANGER_HOST", address().toUtf8());
}

void StrangerHost::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        ++m_contacts;
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            if (socket->canReadLine() && !socket->property("seen").toBool()) {
                socket->setProperty("seen", true);
                m_requestLines.append(QString::fromUtf8(socket->readLine()).trimmed());
            }
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        emit contacted();
    }
}

} // namespace kestrine::testing
