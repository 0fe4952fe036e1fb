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

} // namespace kestrine::fixtures
