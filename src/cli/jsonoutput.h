#pragma once

#include "jsoncodec.h"

#include <QJsonValue>

namespace kestrine::cli {

/// Prints `value` (an object or an array) as indented JSON and a line break.
void printJson(const QJsonValue &value);

/// Prints records, or lists of them, with the keys the app decodes them from and dates as
/// internet date-times.
template <class T>
void printRecordsJson(const T &records)
{
    printJson(encodeJson(records, DateEncoding::InternetDateTime));
}

} // namespace kestrine::cli
