#include "giteaclient.h"

#include <QCoreApplication>

namespace kestrine {

GiteaClient::GiteaClient(QUrl instanceURL, QString token, HttpSession *session, LogSink *log,
                         std::chrono::milliseconds timeout)
    : m_instanceURL(std::move(instanceURL))
    , m_token(std::move(token))
    , m_session(session)
    , m_log(log)
    , m_logObject(dynamic_cast<QObject *>(log))
    , m_logIsObject(!m_logObject.isNull())
    , m_timeout(timeout)
{}

GiteaClient GiteaClient::cancelledWith(QObject *scope) const
{
    GiteaClient copy = *this;
    copy.m_cancellationScope = scope;
    copy.m_hasCancellationScope = scope != nullptr;
    return copy;
}

HttpSession *GiteaClient::sharedSession()
{
    // Owned by the application object, so it goes away before the event loop's end does.
    static QPointer<HttpSession> session;
    if (!session)
        session = new HttpSession(QCoreApplication::instance());
    return session;
}

} // namespace kestrine
