#include "fixtures.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kestrine::fixtures {

QByteArray read(const QString &relativePath)
{
    QFile file(QStringLiteral(KESTRINE_TEST_DATA_DIR "/") + relativePath);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing test data file %s", qPrintable(file.fileName()));
    return file.readAll();
}

QByteArray pullRequestList(int count)
{
    const QJsonObject model =
        QJsonDocument::fromJson(read(QStringLiteral("gitea/pull.json"))).object();
    const QDateTime newest =
        QDateTime::fromString(QStringLiteral("2024-05-01T10:20:30Z"), Qt::ISODate);
    QJsonArray list;
    for (int i = 0; i < count; ++i) {
        QJsonObject pull = model;
        pull.insert(QStringLiteral("id"), 1000 + i);
        pull.insert(QStringLiteral("number"), i + 1);
        pull.insert(QStringLiteral("title"), QStringLiteral("Change number %1").arg(i + 1));
        pull.insert(QStringLiteral("draft"), i % 7 == 0);
        pull.insert(QStringLiteral("updated_at"),
                    newest.addSecs(-3600LL * i).toString(Qt::ISODate));
        list.append(pull);
    }
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

QByteArray largeInstanceSeed(int repositories, int pullsEach, const QString &token)
{
    QJsonArray repos;
    for (int r = 1; r <= repositories; ++r) {
        QJsonArray pulls;
        for (int n = 1; n <= pullsEach; ++n) {
            const QString time = QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC)
                                     .addSecs(r * 3600 + n * 60)
                                     .toString(Qt::ISODate);
            pulls.append(QJsonObject{
                {"user", "ann"},
                {"title", QStringLiteral("Change %1 of repository %2").arg(n).arg(r)},
                {"body", QStringLiteral("Why this change is needed, in a paragraph or two.")},
                {"head", QStringLiteral("change-%1").arg(n)},
                {"created_at", time},
                {"updated_at", time}});
        }
        repos.append(QJsonObject{{"owner", "ann"},
                                 {"name", QStringLiteral("repo-%1").arg(r, 3, 10, QChar(u'0'))},
                                 {"pulls", pulls}});
    }
    return QJsonDocument(QJsonObject{{"users", QJsonArray{QJsonObject{{"login", "ann"}}}},
                                     {"tokens", QJsonObject{{token, "ann"}}},
                                     {"repositories", repos}})
        .toJson(QJsonDocument::Compact);
}

} // namespace kestrine::fixtures
