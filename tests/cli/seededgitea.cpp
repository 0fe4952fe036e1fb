#include "seededgitea.h"

#include "fixtures.h"

#include <QJsonDocument>
#include <QJsonObject>

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

void SeededGitea::answerPullRequestWith(const QString &owner, const QString &repo, int number,
                                        const QString &key, const QJsonValue &value)
{
    QJsonObject pull = m_simulation->pullRequest(owner, repo, number).value_or(QJsonObject());
    // Inserting an undefined value removes the key.
    pull.insert(key, value);
    m_server.route("GET",
                   QStringLiteral("/api/v1/repos/%1/%2/pulls/%3").arg(owner, repo).arg(number),
                   FakeResponse::json(QJsonDocument(pull).toJson()));
}

} // namespace kestrine::testing
