#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// What the share sheet can do with a text where the system offers no share sheet of its own:
/// put it on the clipboard, or write it to a file the user picks.
class ShareService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit ShareService(QObject *parent = nullptr);

    /// Puts `text` on the system clipboard, unchanged.
    Q_INVOKABLE void copyText(const QString &text) const;
    /// What the clipboard holds now, as text.
    Q_INVOKABLE QString clipboardText() const;

    /// Writes `text` as UTF-8, unchanged, to the local file `fileUrl` (replacing it); "" on
    /// success, else why it failed ("Cannot write /x: Permission denied").
    Q_INVOKABLE QString saveText(const QString &text, const QUrl &fileUrl) const;

    /// Where the save dialog starts: the user's documents folder, else the home folder.
    Q_INVOKABLE QUrl defaultFolder() const;
};

} // namespace kestrine::ui
