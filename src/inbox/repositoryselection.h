#pragma once

#include "records.h"

#include <QStringList>

namespace kestrine {

/// The watched repositories: all of them when `monitored` is empty, otherwise those whose full
/// name is listed (exact, case-sensitive), in the server's order. Names that match nothing are
/// ignored. The inbox and the background check both watch exactly these.
inline QList<Repository> selectRepositories(const QList<Repository> &all,
                                            const QStringList &monitored)
{
    if (monitored.isEmpty())
        return all;
    QList<Repository> selected;
    for (const Repository &repo : all) {
        if (monitored.contains(repo.fullName))
            selected.append(repo);
    }
    return selected;
}

} // namespace kestrine
