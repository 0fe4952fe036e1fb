#include "characters.h"

#include <QTextBoundaryFinder>

namespace kestrine::ui {

Characters::Characters(QObject *parent)
    : QObject(parent)
{}

int Characters::count(const QString &text) const
{
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    // The finder starts at the boundary before the first character; each further boundary ends one.
    int characters = 0;
    while (boundaries.toNextBoundary() != -1)
        ++characters;
    return characters;
}

} // namespace kestrine::ui
