#include "bidi.h"

#include "summaries.h"

namespace kestrine::ui {

Bidi::Bidi(QObject *parent)
    : QObject(parent)
{}

QString Bidi::isolate(const QString &text)
{
    return isolateDirection(text);
}

} // namespace kestrine::ui
