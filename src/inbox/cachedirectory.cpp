#include "cachedirectory.h"

#include "storagemode.h"

#include <QDir>
#include <QStandardPaths>

namespace kestrine {

QString cacheDirectory()
{
    // A process on ephemeral storage (the demo instance) keeps its caches with its other private
    // files, so that the user's own inbox cache and notification memory stay as they are.
    if (Storage::isEphemeral()) {
        const QString directory = Storage::ephemeralDirectory() + QStringLiteral("/cache");
        QDir().mkpath(directory);
        return directory;
    }
    // Named explicitly rather than through the application's name, so that the app and its
    // command-line companion always share one directory.
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (base.isEmpty())
        qFatal("No per-user cache directory is available.");
    const QString directory = base + QStringLiteral("/norrum/kestrine");
    QDir().mkpath(directory);
    return directory;
}

} // namespace kestrine
