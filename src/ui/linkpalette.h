#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The colour of links in Markdown text. Qt's Markdown reader colours links with the application
/// palette's link colour when it reads a text (a Text item's linkColor does not reach Markdown), so
/// the window keeps that palette entry at its theme's accent.
class LinkPalette : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor linkColor READ linkColor WRITE setLinkColor NOTIFY linkColorChanged)

public:
    explicit LinkPalette(QObject *parent = nullptr);

    QColor linkColor() const;
    /// Texts read from now on get links in `color`.
    void setLinkColor(const QColor &color);

signals:
    void linkColorChanged();
};

} // namespace kestrine::ui
