#pragma once

// Failure messages of QCOMPARE for what may be nothing: the value, or "nothing".

#include <QByteArray>
#include <QString>
#include <QTest>
#include <QUrl>
#include <optional>

namespace QTest {

template <>
inline char *toString(const std::optional<QString> &value)
{
    return value ? QTest::toString(QStringLiteral("\"%1\"").arg(*value)) : qstrdup("nothing");
}

template <>
inline char *toString(const std::optional<QByteArray> &value)
{
    return value ? QTest::toString(*value) : qstrdup("nothing");
}

template <>
inline char *toString(const std::optional<QUrl> &value)
{
    return value ? QTest::toString(value->toString()) : qstrdup("nothing");
}

} // namespace QTest
