#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The one way a link leaves the app for the desktop. Links come from text that strangers wrote
/// (descriptions, comments), so only web pages and mail addresses are handed on: a `file:`,
/// `javascript:` or custom-scheme link would let a stranger make the desktop open a local file or
/// start another program.
class ExternalLinks : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit ExternalLinks(QObject *parent = nullptr);

    /// True for an absolute `http`, `https` (with a host) or `mailto` URL.
    static bool isOpenable(const QUrl &url);
    Q_INVOKABLE static bool isOpenable(const QString &link);

    /// Hands `link` to the desktop's opener when it is openable; answers whether it did.
    Q_INVOKABLE static bool open(const QString &link);
};

} // namespace kestrine::ui
