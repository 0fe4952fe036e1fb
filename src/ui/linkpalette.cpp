#include "linkpalette.h"

#include <QGuiApplication>
#include <QPalette>

namespace kestrine::ui {

LinkPalette::LinkPalette(QObject *parent)
    : QObject(parent)
{}

QColor LinkPalette::linkColor() const
{
    return QGuiApplication::palette().color(QPalette::Link);
}

void LinkPalette::setLinkColor(const QColor &color)
{
    if (linkColor() == color)
        return;
    QPalette palette = QGuiApplication::palette();
    palette.setColor(QPalette::Link, color);
    palette.setColor(QPalette::LinkVisited, color);
    QGuiApplication::setPalette(palette);
    emit linkColorChanged();
}

} // namespace kestrine::ui
