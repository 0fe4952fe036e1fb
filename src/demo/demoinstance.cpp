#include "demoinstance.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTimeZone>

namespace kestrine {
namespace {

const QString seedResource = QStringLiteral(":/kestrine/demo/demo-seed.json");

// The one form the seed writes its times in.
const QRegularExpression &timePattern()
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\d{4}-\\d{2}-\\d{2}T\\d{2}:\\d{2}:\\d{2}Z$"));
    return pattern;
}

QJsonValue shifted(const QJsonValue &value, qint64 seconds)
{
    switch (value.type()) {
    case QJsonValue::String: {
        const QString text = value.toString();
        if (!timePattern().match(text).hasMatch())
            return value;
        QDateTime time = QDateTime::fromString(text, Qt::ISODate);
        if (!time.isValid())
            return value;
        return time.addSecs(seconds).toUTC().toString(Qt::ISODate);
    }
    case QJsonValue::Array: {
        QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size(); ++i)
            array[i] = shifted(array.at(i), seconds);
        return array;
    }
    case QJsonValue::Object: {
        QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            it.value() = shifted(it.value(), seconds);
        return object;
    }
    default:
        return value;
    }
}

} // namespace

const QDateTime DemoInstance::referenceTime =
    QDateTime(QDate(2024, 5, 2), QTime(12, 0), QTimeZone::utc());

DemoInstance::DemoInstance(std::unique_ptr<GiteaHttpServer> server)
    : m_server(server ? std::move(server) : std::make_unique<GiteaHttpServer>())
{}

DemoInstance::~DemoInstance()
{
    // The simulation's routes live on the server: remove them before the server goes.
    m_simulation.reset();
    m_server.reset();
}

QByteArray DemoInstance::seed(const QDateTime &now)
{
    QFile file(seedResource);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return {};
    const qint64 seconds = referenceTime.secsTo(now);
    return QJsonDocument(shifted(document.object(), seconds).toObject())
        .toJson(QJsonDocument::Compact);
}

bool DemoInstance::start()
{
    if (m_running)
        return true;
    const QByteArray seedJson = seed(QDateTime::currentDateTimeUtc());
    if (seedJson.isEmpty()) {
        m_error = QCoreApplication::translate("DemoInstance",
                                              "The demo data is missing from this build.");
        return false;
    }
    auto simulation = std::make_unique<GiteaSimulation>(seedJson);
    if (!simulation->isValid()) {
        m_error = QCoreApplication::translate("DemoInstance", "The demo data cannot be read: %1")
                      .arg(simulation->loadError());
        return false;
    }
    if (!m_server->listen()) {
        m_error = QCoreApplication::translate("DemoInstance",
                                              "The demo instance cannot listen on 127.0.0.1.");
        return false;
    }
    simulation->install(m_server.get());

    // The seed's first token belongs to the demo user.
    const QJsonObject tokens =
        QJsonDocument::fromJson(seedJson).object().value(QStringLiteral("tokens")).toObject();
    m_token = tokens.isEmpty() ? QString() : tokens.constBegin().key();
    m_simulation = std::move(simulation);
    m_running = true;
    return true;
}

QUrl DemoInstance::url() const
{
    return m_running ? m_server->baseUrl() : QUrl();
}

} // namespace kestrine
