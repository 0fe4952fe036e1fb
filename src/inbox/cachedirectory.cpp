#include "cachedirectory.h"

#include <QDir>
#include <QStandardPaths>

namespace kestrine {

QString cacheDirectory()
{
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
