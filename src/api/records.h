#pragma once

// The value records through which the app sees Gitea's REST API v1. Each record's field table is
// the single place where its JSON keys are spelled; see jsoncodec.h for the decoding rules.
//
// A few keys are deliberately not Gitea's own spelling: a person's `fullName` is read from
// "fullName", not "full_name", so against a real server it is always absent and screens show the
// login instead. Records written by the app's own encoder keep it.

#include "jsoncodec.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace kestrine {

/// A person as Gitea names one. `Owner` (of a repository) and `PRUser` (author, assignee,
/// reviewer) share this shape but are distinct types, so one cannot be passed for the other.
template <class Role>
struct Person
{
    std::optional<qint64> id;
    QString login;
    std::optional<QString> fullName;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &Person::id),
            field("login", &Person::login),
            field("fullName", &Person::fullName),
        };
    }
    bool operator==(const Person &) const = default;
};

struct OwnerRole;
struct PRUserRole;
using Owner = Person<OwnerRole>;
using PRUser = Person<PRUserRole>;

/// The head or base of a pull request.
struct Branch
{
    std::optional<QString> label;
    std::optional<QString> ref;
    std::optional<QString> sha;

    static constexpr auto fields()
    {
        return std::tuple{
            field("label", &Branch::label),
            field("ref", &Branch::ref),
            field("sha", &Branch::sha),
        };
    }
    bool operator==(const Branch &) const = default;
};

struct PRLabel
{
    std::optional<qint64> id;
    QString name;
    std::optional<QString> color;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &PRLabel::id),
            field("name", &PRLabel::name),
            field("color", &PRLabel::color),
        };
    }
    bool operator==(const PRLabel &) const = default;
};

struct PullRequest
{
    qint64 id = 0;
    qint64 number = 0;
    QString title;
    std::optional<QString> body;
    QString state;
    std::optional<QString> htmlURL;
    std::optional<QString> diffURL;
    std::optional<QString> patchURL;
    std::optional<PRUser> user;
    std::optional<QList<PRUser>> assignees;
    std::optional<QList<PRLabel>> labels;
    std::optional<Branch> head;
    std::optional<Branch> base;
    std::optional<QDateTime> createdAt;
    std::optional<QDateTime> updatedAt;
    std::optional<bool> merged;
    std::optional<bool> mergeable;
    std::optional<bool> draft;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &PullRequest::id),
            field("number", &PullRequest::number),
            field("title", &PullRequest::title),
            field("body", &PullRequest::body),
            field("state", &PullRequest::state),
            field("html_url", &PullRequest::htmlURL),
            field("diff_url", &PullRequest::diffURL),
            field("patch_url", &PullRequest::patchURL),
            field("user", &PullRequest::user),
            field("assignees", &PullRequest::assignees),
            field("labels", &PullRequest::labels),
            field("head", &PullRequest::head),
            field("base", &PullRequest::base),
            field("created_at", &PullRequest::createdAt),
            field("updated_at", &PullRequest::updatedAt),
            field("merged", &PullRequest::merged),
            field("mergeable", &PullRequest::mergeable),
            field("draft", &PullRequest::draft),
        };
    }
    bool operator==(const PullRequest &) const = default;
};

struct Repository
{
    qint64 id = 0;
    QString name;
    /// "owner/name": the key the rest of the app names a repository by.
    QString fullName;
    Owner owner;
    std::optional<bool> isPrivate;
    std::optional<QString> htmlURL;
    std::optional<QString> defaultBranch;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &Repository::id),
            field("name", &Repository::name),
            field("full_name", &Repository::fullName),
            field("owner", &Repository::owner),
            field("private", &Repository::isPrivate),
            field("html_url", &Repository::htmlURL),
            field("default_branch", &Repository::defaultBranch),
        };
    }
    bool operator==(const Repository &) const = default;
};

struct PullReview
{
    qint64 id = 0;
    /// Gitea's review state text as sent: "APPROVED", "REQUEST_CHANGES", "COMMENT", ...
    QString state;
    std::optional<QString> body;
    std::optional<PRUser> user;
    std::optional<QDateTime> submittedAt;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &PullReview::id),
            field("state", &PullReview::state),
            field("body", &PullReview::body),
            field("user", &PullReview::user),
            field("submitted_at", &PullReview::submittedAt),
        };
    }
    bool operator==(const PullReview &) const = default;
};

struct IssueComment
{
    qint64 id = 0;
    std::optional<QString> body;
    std::optional<PRUser> user;
    std::optional<QDateTime> createdAt;
    std::optional<QDateTime> updatedAt;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &IssueComment::id),
            field("body", &IssueComment::body),
            field("user", &IssueComment::user),
            field("created_at", &IssueComment::createdAt),
            field("updated_at", &IssueComment::updatedAt),
        };
    }
    bool operator==(const IssueComment &) const = default;
};

struct PRCommit
{
    struct Meta
    {
        std::optional<QString> sha;
        std::optional<QString> message;

        static constexpr auto fields()
        {
            return std::tuple{
                field("sha", &Meta::sha),
                field("message", &Meta::message),
            };
        }
        bool operator==(const Meta &) const = default;
    };

    struct Author
    {
        std::optional<QString> name;
        std::optional<QString> email;
        std::optional<QString> login;

        static constexpr auto fields()
        {
            return std::tuple{
                field("name", &Author::name),
                field("email", &Author::email),
                field("login", &Author::login),
            };
        }
        bool operator==(const Author &) const = default;
    };

    std::optional<QString> sha;
    std::optional<Meta> commit;
    std::optional<Author> author;

    static constexpr auto fields()
    {
        return std::tuple{
            field("sha", &PRCommit::sha),
            field("commit", &PRCommit::commit),
            field("author", &PRCommit::author),
        };
    }
    bool operator==(const PRCommit &) const = default;

    /// The commit's sha; else the inner commit's sha; else "<author name>-<hash of message>".
    /// The last form uses the process's string hash and is stable within one run only: it just
    /// gives list rows some identity.
    QString id() const;
};

struct ChangedFile
{
    QString filename;
    std::optional<QString> status;
    qint64 additions = 0;
    qint64 deletions = 0;
    std::optional<QString> patch;

    static constexpr auto fields()
    {
        return std::tuple{
            field("filename", &ChangedFile::filename),
            field("status", &ChangedFile::status),
            field("additions", &ChangedFile::additions),
            field("deletions", &ChangedFile::deletions),
            field("patch", &ChangedFile::patch),
        };
    }
    bool operator==(const ChangedFile &) const = default;

    /// Files are told apart by name alone.
    const QString &id() const { return filename; }
};

struct ActionRun
{
    qint64 id = 0;
    std::optional<QString> name;
    std::optional<qint64> workflowId;
    std::optional<QString> headBranch;
    std::optional<QString> headSha;
    std::optional<QString> status;
    std::optional<QString> conclusion;
    std::optional<QDateTime> createdAt;
    std::optional<QDateTime> updatedAt;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &ActionRun::id),
            field("name", &ActionRun::name),
            field("workflow_id", &ActionRun::workflowId),
            field("head_branch", &ActionRun::headBranch),
            field("head_sha", &ActionRun::headSha),
            field("status", &ActionRun::status),
            field("conclusion", &ActionRun::conclusion),
            field("created_at", &ActionRun::createdAt),
            field("updated_at", &ActionRun::updatedAt),
        };
    }
    bool operator==(const ActionRun &) const = default;
};

struct ActionJob
{
    qint64 id = 0;
    QString name;
    QString status;
    std::optional<QString> conclusion;
    std::optional<QDateTime> startedAt;
    std::optional<QDateTime> completedAt;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &ActionJob::id),
            field("name", &ActionJob::name),
            field("status", &ActionJob::status),
            field("conclusion", &ActionJob::conclusion),
            field("started_at", &ActionJob::startedAt),
            field("completed_at", &ActionJob::completedAt),
        };
    }
    bool operator==(const ActionJob &) const = default;
};

/// One context's latest status on a commit, as any CI reports it through Gitea (Woodpecker, Drone,
/// Jenkins, and Gitea Actions itself, which posts one per job).
struct CommitStatus
{
    qint64 id = 0;
    /// "pending", "success", "error", "failure" or "warning".
    std::optional<QString> status;
    std::optional<QString> context;
    std::optional<QString> description;
    std::optional<QString> targetUrl;
    std::optional<QDateTime> createdAt;
    std::optional<QDateTime> updatedAt;

    static constexpr auto fields()
    {
        return std::tuple{
            field("id", &CommitStatus::id),
            field("status", &CommitStatus::status),
            field("context", &CommitStatus::context),
            field("description", &CommitStatus::description),
            field("target_url", &CommitStatus::targetUrl),
            field("created_at", &CommitStatus::createdAt),
            field("updated_at", &CommitStatus::updatedAt),
        };
    }
    bool operator==(const CommitStatus &) const = default;
};

} // namespace kestrine
