#pragma once

#include "fakegiteaserver.h"
#include "giteasimulation.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace kestrine::testing {

/// The Gitea the CLI tests talk to: the simulation of tests/data/gitea/seed.json on a fake server
/// of the test process, which records every request.
class SeededGitea
{
public:
    // The seed's tokens.
    /// ann: owns ann/tool and ann/website.
    static const QString annToken;
    /// bo: writes to ann/tool.
    static const QString boToken;

    SeededGitea();
    ~SeededGitea();

    /// Starts listening; false when the seed cannot be read or no port opens.
    bool start();
    /// "http://127.0.0.1:<port>".
    QString url() const;

    FakeGiteaServer &server() { return m_server; }
    GiteaSimulation &simulation() { return *m_simulation; }

    /// Every request so far as "METHOD target", in arrival order.
    QStringList requestLines() const;

private:
    FakeGiteaServer m_server;
    std::unique_ptr<GiteaSimulation> m_simulation;
};

} // namespace kestrine::testing
