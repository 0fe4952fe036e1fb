#include "changedfilemark.h"

namespace kestrine {

QString changedFileMark(const std::optional<QString> &status)
{
    const QString word = status.value_or(QString());
    if (word == u"added")
        return QStringLiteral("＋");
    if (word == u"deleted" || word == u"removed")
        return QStringLiteral("－");
    if (word == u"renamed")
        return QStringLiteral("→");
    return QStringLiteral("✎");
}

} // namespace kestrine
