#include "giteaendpoints_p.h"

#include <QJsonDocument>

namespace kestrine::sim {

QUrlQuery Call::query() const
{
    return QUrlQuery(QString::fromUtf8(request.rawQuery));
}

Access Call::access() const
{
    return repo ? state.access(*repo, doer) : Access::None;
}

PullRequest *Call::pull() const
{
    bool ok = false;
    const int number = params.value(QStringLiteral("index")).toInt(&ok);
    return ok && repo ? repo->pull(number) : nullptr;
}

HttpAnswer Call::answer(const QJsonValue &body, int status) const
{
    return HttpAnswer::json(goJson(body), status);
}

HttpAnswer Call::error(int status, const QString &message) const
{
    return HttpAnswer::json(errorBody(message, json.swaggerUrl()), status);
}

HttpAnswer Call::notFound(const QStringList &errors) const
{
    return HttpAnswer::json(notFoundBody(json.swaggerUrl(), errors), 404);
}

std::variant<QJsonObject, HttpAnswer> Call::bind() const
{
    const QByteArray type = request.header("Content-Type");
    if (type.contains("form-urlencoded")) {
        QByteArray form = request.body;
        const QUrlQuery fields(QString::fromUtf8(form.replace('+', "%20")));
        QJsonObject object;
        for (const auto &[key, value] : fields.queryItems(QUrl::FullyDecoded))
            object.insert(key, value);
        return object;
    }
    if (type.contains("json")) {
        if (request.body.trimmed().isEmpty())
            return QJsonObject();
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(request.body, &parseError);
        if (parseError.error != QJsonParseError::NoError || !document.isObject())
            return error(422, QStringLiteral("[]: cannot decode the body as an object"));
        return document.object();
    }
    return error(422, type.isEmpty() ? QStringLiteral("[]: Empty Content-Type")
                                     : QStringLiteral("[]: Unsupported Content-Type"));
}

QJsonValue bodyField(const QJsonObject &body, const QString &key)
{
    if (body.contains(key))
        return body.value(key);
    for (auto it = body.begin(); it != body.end(); ++it) {
        if (it.key().compare(key, Qt::CaseInsensitive) == 0)
            return it.value();
    }
    return QJsonValue(QJsonValue::Undefined);
}

QString bodyText(const QJsonObject &body, const QString &key)
{
    return bodyField(body, key).toString();
}

bool bodyFlag(const QJsonObject &body, const QString &key)
{
    const QJsonValue value = bodyField(body, key);
    if (value.isString())
        return value.toString() == QLatin1String("true") || value.toString() == QLatin1String("on");
    return value.toBool();
}

} // namespace kestrine::sim
