#include "records.h"

namespace kestrine {

QString PRCommit::id() const
{
    if (sha)
        return *sha;
    if (commit && commit->sha)
        return *commit->sha;
    const QString authorName = author && author->name ? *author->name : QString();
    const size_t messageHash = commit && commit->message ? qHash(*commit->message) : 0;
    return authorName + u'-' + QString::number(messageHash);
}

} // namespace kestrine
