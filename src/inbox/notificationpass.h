#pragma once

#include <QCoroTask>

namespace kestrine {

/// The background check that the inbox starts after each completed load while notifications are
/// on. It lives in the background layer, above the inbox, so the app hands it in at start.
class NotificationPass
{
public:
    virtual ~NotificationPass() = default;
    /// One pass; answers the number of notifications posted. Never throws.
    virtual QCoro::Task<int> poll() = 0;

    /// The pass the inbox starts; none until the app installs one.
    static NotificationPass *installed();
    static void install(NotificationPass *pass);

protected:
    NotificationPass() = default;
};

} // namespace kestrine
