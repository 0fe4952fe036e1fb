#include "jsonoutput.h"

#include "console.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kestrine::cli {

void printJson(const QJsonValue &value)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    // toJson ends the document with a line break of its own.
    console::writeBytes(document.toJson(QJsonDocument::Indented));
}

} // namespace kestrine::cli
