#pragma once

#include <functional>

namespace kestrine {

/// Runs `react` on the main thread's event loop when the process receives SIGTERM, the signal
/// systemd and a session's logout stop a program with, instead of ending the process on the spot:
/// so that what is still waiting (the log's last second) reaches the disk. A second SIGTERM ends
/// the process at once, as without this. Call once, after the application object exists.
void onTerminationSignal(std::function<void()> react);

} // namespace kestrine
