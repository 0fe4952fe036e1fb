#include "httpsession.h"

#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QUrl>
#include <algorithm>
#include <memory>
#include <utility>

namespace kestrine {
namespace {

QString originOf(const QUrl &url)
{
    return url.scheme() + QStringLiteral("://") + url.host() + u':' +
           QString::number(url.port(url.scheme() == QLatin1StringView("https") ? 443 : 80));
}

} // namespace

HttpSession::HttpSession(QObject *parent, int managerCount)
    : QObject(parent)
    , m_cookieJar(new QNetworkCookieJar(this))
{
    for (int i = 0; i < std::max(1, managerCount); ++i) {
        auto *manager = new QNetworkAccessManager(this);
        // A manager adopts the jar it is given; the session keeps it, so that every manager
        // shares it and none deletes it.
        manager->setCookieJar(m_cookieJar);
        m_cookieJar->setParent(this);
        m_managers.append(Manager{manager, 0});
    }
}

// The managers go before the jar they share: they are children created after it, and children
// are deleted in the order they were added, so the jar would otherwise go first.
HttpSession::~HttpSession()
{
    for (const Manager &entry : std::as_const(m_managers))
        delete entry.manager;
}

int HttpSession::maxConnectionsPerOrigin() const
{
    return int(m_managers.size()) * connectionsPerManager;
}

bool HttpSession::speaksHttp2(const QUrl &url) const
{
    return m_http2Origins.contains(originOf(url));
}

int HttpSession::requestsInFlight() const
{
    int count = 0;
    for (const Manager &entry : m_managers)
        count += entry.inFlight;
    return count;
}

qsizetype HttpSession::pick(const QString &origin) const
{
    if (m_http2Origins.contains(origin))
        return 0;
    qsizetype leastBusy = 0;
    for (qsizetype i = 0; i < m_managers.size(); ++i) {
        if (m_managers.at(i).inFlight < connectionsPerManager)
            return i;
        if (m_managers.at(i).inFlight < m_managers.at(leastBusy).inFlight)
            leastBusy = i;
    }
    return leastBusy;
}

QNetworkReply *HttpSession::send(const QNetworkRequest &request, const QByteArray &method,
                                 const std::optional<QByteArray> &body)
{
    const QString origin = originOf(request.url());
    const qsizetype index = pick(origin);
    QNetworkAccessManager &manager = *m_managers.at(index).manager;
    QNetworkReply *reply = nullptr;
    if (method == "GET" && !body)
        reply = manager.get(request);
    else if (body)
        reply = manager.sendCustomRequest(request, method, *body);
    else
        reply = manager.sendCustomRequest(request, method);
    ++m_managers[index].inFlight;

    // A reply ends with finished(), also when aborted; one deleted before that ends with its
    // destruction. Either way it is counted out once.
    auto counted = std::make_shared<bool>(true);
    connect(reply, &QNetworkReply::finished, this, [this, index, origin, reply, counted] {
        if (std::exchange(*counted, false))
            finished(index, origin, reply);
    });
    connect(reply, &QObject::destroyed, this, [this, index, counted] {
        if (std::exchange(*counted, false))
            --m_managers[index].inFlight;
    });
    return reply;
}

void HttpSession::finished(qsizetype index, const QString &origin, QNetworkReply *reply)
{
    --m_managers[index].inFlight;
    // Only an answer tells the protocol; a reply that failed before one arrived tells nothing.
    if (!reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid())
        return;
    if (reply->attribute(QNetworkRequest::Http2WasUsedAttribute).toBool())
        m_http2Origins.insert(origin);
    else
        m_http2Origins.remove(origin);
}

} // namespace kestrine
