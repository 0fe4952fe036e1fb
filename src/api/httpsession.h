#pragma once

#include <QByteArray>
#include <QList>
#include <QNetworkRequest>
#include <QObject>
#include <QSet>
#include <QString>
#include <optional>

class QNetworkAccessManager;
class QNetworkCookieJar;
class QNetworkReply;
class QUrl;

namespace kestrine {

/// Where the client's requests go out: a few network access managers sharing one cookie jar.
///
/// Qt opens at most six HTTP/1.1 connections to a host per manager and offers no setting for it,
/// so an inbox of a few hundred repositories would wait in rounds of six. The session sends each
/// request through the first manager with a free connection and, when all are busy, through the
/// least busy one: a burst gets managerCount × 6 connections at most, while requests one after
/// another keep reusing the first manager's connection. Once an origin has answered over HTTP/2,
/// whose one connection carries every request side by side, everything to it goes through the
/// first manager, so that no second connection is opened.
class HttpSession : public QObject
{
    Q_OBJECT

public:
    /// The connections Qt opens to one host per manager (and per protocol).
    static constexpr int connectionsPerManager = 6;
    /// Five managers: 30 connections to an HTTP/1.1 instance at most.
    static constexpr int defaultManagerCount = 5;

    explicit HttpSession(QObject *parent = nullptr, int managerCount = defaultManagerCount);
    ~HttpSession() override;

    /// Sends `request`. GET without a body goes through get(), the only call that serves every
    /// scheme a manager knows; every other method is sent as it is, without a body unless one is
    /// given (so no Content-Type is invented). The reply belongs to one of the session's managers.
    QNetworkReply *send(const QNetworkRequest &request, const QByteArray &method,
                        const std::optional<QByteArray> &body = std::nullopt);

    /// How many connections a burst of requests to one HTTP/1.1 origin opens at most.
    int maxConnectionsPerOrigin() const;
    /// True once the origin of `url` (scheme, host and port) has last answered over HTTP/2.
    bool speaksHttp2(const QUrl &url) const;
    /// Requests sent and not yet finished.
    int requestsInFlight() const;
    QNetworkCookieJar *cookieJar() const { return m_cookieJar; }

private:
    struct Manager
    {
        QNetworkAccessManager *manager = nullptr;
        int inFlight = 0;
    };

    qsizetype pick(const QString &origin) const;
    void finished(qsizetype index, const QString &origin, QNetworkReply *reply);

    QList<Manager> m_managers;
    QNetworkCookieJar *m_cookieJar = nullptr;
    QSet<QString> m_http2Origins;
};

} // namespace kestrine
