#pragma once

#include <QString>

namespace kestrine {

/// The per-user caches directory that holds the inbox cache and the notification state
/// ($XDG_CACHE_HOME/norrum/kestrine on Linux; in ephemeral storage mode, a folder inside the
/// private temporary folder of storagemode.h), created when missing. The app cannot work without
/// one, so its absence stops the process.
QString cacheDirectory();

} // namespace kestrine
