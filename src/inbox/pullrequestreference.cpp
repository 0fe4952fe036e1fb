#include "pullrequestreference.h"

#include "prrow.h"

namespace kestrine {
namespace {

/// Gitea's own rule for user, organisation and repository names, less its list of reserved words
/// (which the server answers with "not found" anyway).
bool isGiteaName(QStringView name)
{
    if (name.isEmpty() || name == u"." || name == u"..")
        return false;
    for (const QChar c : name) {
        const bool allowed = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') ||
                             (c >= u'0' && c <= u'9') || c == u'-' || c == u'_' || c == u'.';
        if (!allowed)
            return false;
    }
    return true;
}

/// A positive decimal number without sign, blanks or anything else around it.
std::optional<qint64> positiveNumber(QStringView text)
{
    if (text.isEmpty())
        return std::nullopt;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
    }
    bool fits = false;
    const qint64 number = text.toLongLong(&fits);
    if (!fits || number <= 0)
        return std::nullopt;
    return number;
}

} // namespace

Repository repositoryNamed(const QString &owner, const QString &name)
{
    Repository repo;
    repo.owner.login = owner;
    repo.name = name;
    repo.fullName = owner + u'/' + name;
    return repo;
}

QString PullRequestReference::key() const
{
    return PRRow::pullRequestKey(repo.fullName, number);
}

QString PullRequestReference::syntax()
{
    return QStringLiteral("OWNER/REPO#NUMBER");
}

std::optional<PullRequestReference> PullRequestReference::parse(const QString &text)
{
    const qsizetype hash = text.lastIndexOf(u'#');
    if (hash < 0)
        return std::nullopt;
    const QStringView fullName = QStringView(text).left(hash);
    const qsizetype slash = fullName.indexOf(u'/');
    if (slash < 0)
        return std::nullopt;
    const QStringView owner = fullName.left(slash);
    const QStringView name = fullName.mid(slash + 1);
    const std::optional<qint64> number = positiveNumber(QStringView(text).mid(hash + 1));
    if (!isGiteaName(owner) || !isGiteaName(name) || !number)
        return std::nullopt;
    return PullRequestReference{repositoryNamed(owner.toString(), name.toString()), *number};
}

} // namespace kestrine
