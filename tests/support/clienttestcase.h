#pragma once

#include "fakegiteaserver.h"
#include "giteaclient.h"
#include "recordinglog.h"

#include <QObject>
#include <QString>
#include <chrono>

namespace kestrine::testing {

/// Tests of the client against a fake Gitea server that each test starts afresh, with a log of
/// the lines the client writes.
class ClientTestCase : public QObject
{
    Q_OBJECT

protected:
    FakeGiteaServer *server = nullptr;
    RecordingLog log;

    /// A new server with no routes, and an empty log; for a test's init(). False when the server
    /// could not listen.
    [[nodiscard]] bool startServer();
    /// For a test's cleanup().
    void stopServer();

    /// A client of the server, writing to `log`.
    GiteaClient client(const QString &token = QStringLiteral("s3cret"),
                       std::chrono::milliseconds timeout = GiteaClient::defaultTimeout);
};

} // namespace kestrine::testing
