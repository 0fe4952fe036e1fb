#pragma once

// Gitea's JSON for the simulation's state: the full objects a real server writes (snake_case keys,
// fields the app ignores included), as one viewer sees them, plus Gitea's error bodies.

#include "giteastate.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

namespace kestrine::sim {

/// Builds the JSON objects of one answer. `rootUrl` is the instance's ROOT_URL with its trailing
/// slash ("http://127.0.0.1:4000/gitea/"); `viewer` is the authenticated user or null.
///
/// A renderer lives for one answer, which is rendered after any change the request makes, so it
/// builds each user and repository once: a list of pull requests names the same few dozens of
/// times (poster, base and head repository).
class Renderer
{
public:
    Renderer(const State &state, QString rootUrl, const User *viewer);

    const QString &rootUrl() const { return m_rootUrl; }
    /// Where every error body points, as Gitea's "url".
    QString swaggerUrl() const;
    QString htmlUrl(const Repository &repo) const;
    QString apiUrl(const Repository &repo) const;
    QString htmlUrl(const Repository &repo, const PullRequest &pull) const;

    /// The user with this id, or null (Gitea's way of saying "nobody").
    QJsonValue user(qint64 id) const;
    QJsonObject user(const User &user) const;
    QJsonObject repository(const Repository &repo) const;
    QJsonObject pullRequest(const Repository &repo, const PullRequest &pull) const;
    QJsonObject review(const Repository &repo, const PullRequest &pull, const Review &review) const;
    QJsonObject comment(const Repository &repo, const PullRequest &pull,
                        const Comment &comment) const;
    QJsonObject changedFile(const Repository &repo, const PullRequest &pull,
                            const ChangedFile &file) const;
    QJsonObject commit(const Repository &repo, const Commit &commit) const;
    QJsonObject run(const Repository &repo, const Run &run) const;
    QJsonObject job(const Repository &repo, const Run &run, const Job &job) const;
    QJsonObject commitStatus(const Repository &repo, const CommitStatus &status) const;

private:
    QJsonObject repository(const Repository &repo, Access access) const;
    QJsonObject branchEnd(const Repository &repo, const QString &label, const QString &ref,
                          const QString &sha) const;
    QJsonObject label(const Repository &repo, const Label &label) const;
    QString host() const;

    const State &m_state;
    QString m_rootUrl;
    const User *m_viewer;
    mutable QHash<qint64, QJsonObject> m_users;
    mutable QHash<qint64, QJsonObject> m_repositories;
};

/// "2024-05-01T10:20:30Z", or Go's zero time "0001-01-01T00:00:00Z" for an invalid time.
QString goTime(const QDateTime &time);
/// A Gitea time stamp: "1970-01-01T00:00:00Z" (stamp 0) for an invalid time.
QString stampTime(const QDateTime &time);

/// Compact JSON escaped as Go's encoder writes it ("<", ">" and "&" as \u escapes).
QByteArray goJson(const QJsonValue &value);
/// {"message": message, "url": swaggerUrl}.
QByteArray errorBody(const QString &message, const QString &swaggerUrl);
/// {"errors": null or [...], "message": message, "url": swaggerUrl}.
QByteArray notFoundBody(const QString &swaggerUrl, const QStringList &errors = {},
                        const QString &message = QStringLiteral("not found"));

} // namespace kestrine::sim
