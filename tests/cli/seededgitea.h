#pragma once

#include "fakegiteaserver.h"
#include "giteasimulation.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <memory>

namespace kestrine::testing {

/// The Gitea the CLI tests talk to: the simulation of tests/data/gitea/seed.json on a fake server
/// of the test process, which records every request.
class SeededGitea
{
public:
    // The seed's tokens. Inline, so that they are set before any constant of a test file that
    // includes this header is initialised from them.
    /// ann: owns ann/tool and ann/website.
    static inline const QString annToken =
        QStringLiteral("4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d");
    /// bo: writes to ann/tool.
    static inline const QString boToken =
        QStringLiteral("9e8d7c6b5a4f3e2d1c0b9a8f7e6d5c4b3a291807");

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

    /// From now on pull request `number` of `owner`/`repo` is answered as the simulation has it
    /// now, with `key` set to `value`; an undefined value leaves the key out.
    void answerPullRequestWith(const QString &owner, const QString &repo, int number,
                               const QString &key, const QJsonValue &value);

private:
    FakeGiteaServer m_server;
    std::unique_ptr<GiteaSimulation> m_simulation;
};

} // namespace kestrine::testing
