#pragma once

#include "records.h"

#include <QString>

namespace kestrine {

/// One inbox entry: a pull request and the repository it belongs to, as the list endpoint gave
/// them. Stored in the inbox cache as {"repo": ..., "pr": ...}.
struct PRRow
{
    Repository repo;
    PullRequest pr;

    static constexpr auto fields()
    {
        return std::tuple{field("repo", &PRRow::repo), field("pr", &PRRow::pr)};
    }
    bool operator==(const PRRow &) const = default;

    /// "owner/name#42": the row's identity, and the key of the pull request in the notification
    /// state.
    QString id() const { return pullRequestKey(repo, pr); }

    static QString pullRequestKey(const Repository &repo, const PullRequest &pr)
    {
        return pullRequestKey(repo.fullName, pr.number);
    }
    static QString pullRequestKey(const QString &repositoryFullName, qint64 number)
    {
        return repositoryFullName + u'#' + QString::number(number);
    }
};

} // namespace kestrine
