#include "notificationpass.h"

namespace kestrine {
namespace {
NotificationPass *installedPass = nullptr;
} // namespace

NotificationPass *NotificationPass::installed()
{
    return installedPass;
}

void NotificationPass::install(NotificationPass *pass)
{
    installedPass = pass;
}

} // namespace kestrine
