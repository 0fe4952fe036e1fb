#pragma once

#include <QHash>
#include <QSet>
#include <QString>

namespace kestrine {

/// What the background check has already told the user: the pull requests announced as new, and
/// the CI summary last seen for each. Kept in "notification-state.json" beside the inbox cache,
/// read at the start of a pass and written at its end.
struct NotificationState
{
    /// Keys "owner/name#42" of the pull requests announced as "New PR".
    QSet<QString> announcedNewPRs;
    /// Key → name of the last CI summary seen ("running", "success", "failure", "cancelled",
    /// "unknown"). Only announced pull requests have one.
    QHash<QString, QString> ciStatusByPR;

    bool operator==(const NotificationState &) const = default;

    /// The state file in the per-user caches directory.
    static QString defaultFilePath();

    /// The stored state; anything missing, unreadable or of the wrong shape is the empty state.
    static NotificationState load(const QString &filePath = defaultFilePath());
    /// Replaces the file in one plain write; failures are ignored.
    void save(const QString &filePath = defaultFilePath()) const;

    QByteArray toJson() const;
    static NotificationState fromJson(const QByteArray &json);
};

} // namespace kestrine
