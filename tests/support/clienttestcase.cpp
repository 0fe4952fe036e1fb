#include "clienttestcase.h"

namespace kestrine::testing {

bool ClientTestCase::startServer()
{
    server = new FakeGiteaServer(this);
    log.clear();
    return server->listen();
}

void ClientTestCase::stopServer()
{
    delete server;
    server = nullptr;
}

GiteaClient ClientTestCase::client(const QString &token, std::chrono::milliseconds timeout)
{
    return GiteaClient(server->baseUrl(), token, GiteaClient::sharedSession(), &log, timeout);
}

} // namespace kestrine::testing
