#include "giteastate.h"

#include <QCryptographicHash>
#include <QUrl>
#include <algorithm>

namespace kestrine::sim {
namespace {

template <class List, class Predicate>
auto findIn(List &list, Predicate predicate) -> decltype(&*list.begin())
{
    const auto it = std::find_if(list.begin(), list.end(), predicate);
    return it == list.end() ? nullptr : &*it;
}

} // namespace

PullRequest *Repository::pull(int number)
{
    return findIn(pulls, [number](const PullRequest &p) { return p.number == number; });
}

const PullRequest *Repository::pull(int number) const
{
    return findIn(pulls, [number](const PullRequest &p) { return p.number == number; });
}

Branch *Repository::branch(const QString &name)
{
    return findIn(branches, [&name](const Branch &b) { return b.name == name; });
}

const Branch *Repository::branch(const QString &name) const
{
    return findIn(branches, [&name](const Branch &b) { return b.name == name; });
}

bool Repository::removeBranch(const QString &name)
{
    return branches.removeIf([&name](const Branch &b) { return b.name == name; }) > 0;
}

Run *Repository::run(qint64 id)
{
    return findIn(runs, [id](const Run &r) { return r.id == id; });
}

const Run *Repository::run(qint64 id) const
{
    return findIn(runs, [id](const Run &r) { return r.id == id; });
}

std::optional<std::pair<const Run *, const Job *>> Repository::job(qint64 id) const
{
    for (const Run &run : runs) {
        for (const Job &job : run.jobs) {
            if (job.id == id)
                return std::pair{&run, &job};
        }
    }
    return std::nullopt;
}

const User *State::user(qint64 id) const
{
    return findIn(users, [id](const User &u) { return u.id == id; });
}

const User *State::user(const QString &login) const
{
    return findIn(users, [&login](const User &u) {
        return u.login.compare(login, Qt::CaseInsensitive) == 0;
    });
}

Repository *State::repository(const QString &owner, const QString &name)
{
    const User *ownerUser = user(owner);
    if (!ownerUser)
        return nullptr;
    return findIn(repositories, [&](const Repository &r) {
        return r.ownerId == ownerUser->id && r.name.compare(name, Qt::CaseInsensitive) == 0;
    });
}

const Repository *State::repository(const QString &owner, const QString &name) const
{
    return const_cast<State *>(this)->repository(owner, name);
}

Access State::access(const Repository &repository, const User *viewer) const
{
    if (viewer && (viewer->isAdmin || viewer->id == repository.ownerId))
        return Access::Admin;
    const Access granted =
        viewer ? repository.collaborators.value(viewer->id, Access::None) : Access::None;
    if (granted != Access::None)
        return granted;
    return repository.isPrivate ? Access::None : Access::Read;
}

const QStringList &mergeStyleNames()
{
    static const QStringList names{QStringLiteral("merge"),
                                   QStringLiteral("rebase"),
                                   QStringLiteral("rebase-merge"),
                                   QStringLiteral("squash"),
                                   QStringLiteral("fast-forward-only"),
                                   QStringLiteral("manually-merged")};
    return names;
}

bool isWorkInProgress(const QString &title)
{
    return title.startsWith(QLatin1String("WIP:"), Qt::CaseInsensitive) ||
           title.startsWith(QLatin1String("[WIP]"), Qt::CaseInsensitive);
}

QString normalizedRootUrl(const QString &rootUrl)
{
    if (rootUrl.isEmpty())
        return {};
    QUrl url(rootUrl);
    if ((url.scheme() == QLatin1String("http") && url.port() == 80) ||
        (url.scheme() == QLatin1String("https") && url.port() == 443))
        url.setPort(-1);
    QString text = url.toString(QUrl::FullyEncoded);
    while (text.endsWith(u'/'))
        text.chop(1);
    return text + u'/';
}

QString derivedSha(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha1).toHex());
}

} // namespace kestrine::sim
