#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpServer>

namespace kestrine::testing {

/// A host that no screen may ever talk to: a listener on 127.0.0.1 at which every image and link
/// address of the hostile seed (tests/data/gitea/hostile-seed.json) points. Whatever connects to
/// it was fetched by the app on a stranger's say-so.
class StrangerHost : public QObject
{
    Q_OBJECT

public:
    explicit StrangerHost(QObject *parent = nullptr);

    /// Starts listening on a free port of 127.0.0.1.
    bool listen();
    /// "127.0.0.1:<port>".
    QString address() const;

    /// How many connections arrived, and the first line of each request that came with one.
    int contacts() const { return m_contacts; }
    QStringList requestLines() const { return m_requestLines; }
    void forget();

    /// The hostile seed, its addresses pointing at this host.
    QByteArray hostileSeed() const;

signals:
    void contacted();

private:
    void accept();

    QTcpServer m_server;
    int m_contacts = 0;
    QStringList m_requestLines;
};

} // namespace kestrine::testing
