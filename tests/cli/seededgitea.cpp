#include "seededgitea.h"

#include "fixtures.h"

namespace kestrine::testing {

const QString SeededGitea::annToken = QStringLiteral("4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d");
const QString SeededGitea::boToken = QStringLiteral("9e8d7c6b5a4f3e2d1c0b9a8f7e6d5c4b3a291807");

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
