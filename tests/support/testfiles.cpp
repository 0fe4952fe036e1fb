#include "testfiles.h"

#include "defaultsstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace kestrine::testing {

QString userDefaultsPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/norrum/kestrine.json");
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

std::unique_ptr<QSettings> SettingsFromDisk::read(const QString &path)
{
    const QString copy = m_dir.filePath(QStringLiteral("copy-%1.json").arg(++m_copies));
    if (!m_dir.isValid() || !QFile::copy(path, copy))
        return nullptr;
    return std::make_unique<QSettings>(copy, jsonSettingsFormat());
}

QString defaultsFileInTheWay()
{
    const QString defaultsFile = defaultsStore().fileName();
    if (!QFile::exists(defaultsFile))
        return {};
    return QStringLiteral("%1 exists already: run this test through tests/run-isolated")
        .arg(defaultsFile);
}

} // namespace kestrine::testing
