#include "shareservice.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QSaveFile>
#include <QStandardPaths>

namespace kestrine::ui {

ShareService::ShareService(QObject *parent)
    : QObject(parent)
{}

void ShareService::copyText(const QString &text) const
{
    QGuiApplication::clipboard()->setText(text);
}

QString ShareService::clipboardText() const
{
    return QGuiApplication::clipboard()->text();
}

QString ShareService::saveText(const QString &text, const QUrl &fileUrl) const
{
    const QString path = fileUrl.isLocalFile() ? fileUrl.toLocalFile() : QString();
    if (path.isEmpty())
        return QCoreApplication::translate("ShareService", "Cannot write to %1: not a local file")
            .arg(fileUrl.toString());
    // All or nothing: a failed write leaves an existing file as it was.
    QSaveFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return QCoreApplication::translate("ShareService", "Cannot write %1: %2")
            .arg(QDir::toNativeSeparators(path), file.errorString());
    return {};
}

QUrl ShareService::defaultFolder() const
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty() || !QDir(folder).exists())
        folder = QDir::homePath();
    return QUrl::fromLocalFile(folder);
}

} // namespace kestrine::ui
