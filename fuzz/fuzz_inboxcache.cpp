// The inbox cache file as it may be found on disk: any bytes, read as the cache reads them. A row
// list that reads must also survive the cache's own writer: written with numeric dates (the
// writer's form) it reads back exactly when no row holds a date, the pairing the cache is
// documented to have, and written with date texts it always reads back.

#include "fuzzsupport.h"
#include "prrow.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

QByteArray fileBytes(const QList<PRRow> &rows, DateEncoding dates)
{
    return QJsonDocument(encodeJson(rows, dates).toArray()).toJson(QJsonDocument::Compact);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::optional<QList<PRRow>> rows = tryDecode<QList<PRRow>>(bytes(data, size));
    if (!rows)
        return 0;
    for (const PRRow &row : *rows)
        check(row.id() == row.repo.fullName + u'#' + QString::number(row.pr.number),
              "a row is named by its repository and number", row.id());

    const QByteArray written = fileBytes(*rows, DateEncoding::SecondsSinceReferenceDate);
    const std::optional<QList<PRRow>> reread = tryDecode<QList<PRRow>>(written);
    check(reread.has_value() == !containsDate(*rows),
          "the writer's file reads back exactly when no row has a date",
          QString::fromUtf8(written));
    if (reread)
        check(*reread == *rows, "and then as it was written", QString::fromUtf8(written));

    const QByteArray withTexts = fileBytes(*rows, DateEncoding::InternetDateTime);
    const std::optional<QList<PRRow>> fromTexts = tryDecode<QList<PRRow>>(withTexts);
    check(fromTexts.has_value() && *fromTexts == withWholeSecondDates(*rows),
          "rows written with date texts read back to the second", QString::fromUtf8(withTexts));
    return 0;
}
