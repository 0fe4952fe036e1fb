// The log's stored form as it may be found in the defaults file: any bytes. Loading never fails
// loudly; what it keeps is a list of well-formed entries, and storing those and loading them again
// keeps every one of them (new ids, same second, level and text).

#include "fuzzsupport.h"
#include "logstore.h"

using namespace kestrine;
using namespace kestrine::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<LogEntry> entries = LogStore::decode(bytes(data, size));
    for (const LogEntry &entry : entries) {
        check(entry.timestamp.isValid() && entry.timestamp.time().msec() == 0,
              "a loaded entry has a valid time to the second", entry.message);
        check(entry.levelLabel() == QLatin1StringView("INFO") ||
                  entry.levelLabel() == QLatin1StringView("WARN") ||
                  entry.levelLabel() == QLatin1StringView("ERROR"),
              "a loaded entry has one of the three levels");
        check(!entry.id.isNull(), "a loaded entry gets an id");
        check(entry.line().endsWith(entry.message), "the export line ends in the message");
    }

    const QByteArray stored = LogStore::encode(entries);
    const QList<LogEntry> reloaded = LogStore::decode(stored);
    check(reloaded.size() == entries.size(), "storing and loading keeps every entry",
          QString::fromUtf8(stored));
    for (qsizetype i = 0; i < entries.size(); ++i) {
        check(reloaded[i].timestamp == entries[i].timestamp &&
                  reloaded[i].level == entries[i].level &&
                  reloaded[i].message == entries[i].message,
              "and each reads back the same", entries[i].line());
    }
    check(LogStore::encode(reloaded) == stored, "the stored form is stable");
    return 0;
}
