#include "seededgitea.h"

#include "fixtures.h"

namespace kestrine::testing {

SeededGitea::SeededGitea()
    : m_simulation(
          std::make_unique<GiteaSimulation>(fixtures::read(QStringLiteral("gitea/seed.json"))))
{}

SeededGitea::~SeededGitea() = default;

bool SeededGitea::start()
{
    if (!m_simulation->isValid() || !m_server.listen())
        return false;
    m_simulation->install(&m_server);
    return true;
}

QString SeededGitea::url() const
{
    return m_server.baseUrl().toString();
}

QStringList SeededGitea::requestLines() const
{
    QStringList lines;
    for (const RecordedRequest &request : m_server.requests())
        lines.append(QString::fromLatin1(request.method + ' ' + request.target));
    return lines;
}

} // namespace kestrine::testing
