#include "testgitea.h"

#include "defaultsstore.h"
#include "fixtures.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "logstore.h"
#include "pagedanswer.h"
#include "settingsstore.h"
#include "textchunksmodel.h"

#include <QDesktopServices>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace kestrine::testing {
namespace {

const QString viewerToken = QStringLiteral("4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d");

// What a link in a description or comment could name; each is answered by the test.
const QStringList linkSchemes{QStringLiteral("http"),       QStringLiteral("https"),
                              QStringLiteral("mailto"),     QStringLiteral("file"),
                              QStringLiteral("javascript"), QStringLiteral("kestrine-evil")};

} // namespace

TestGitea::TestGitea(QObject *parent)
    : QObject(parent)
{
    connect(&m_stranger, &StrangerHost::contacted, this, &TestGitea::strangerContactsChanged);
    for (const QString &scheme : linkSchemes)
        QDesktopServices::setUrlHandler(scheme, this, "recordOpenedLink");
}

TestGitea::~TestGitea()
{
    for (const QString &scheme : linkSchemes)
        QDesktopServices::unsetUrlHandler(scheme);
    m_simulation.reset();
    m_server.reset();
}

bool TestGitea::start()
{
    // As the app does at its entry, before anything reads the credentials.
    runToEnd(m_stores.settings.load());
    m_server = std::make_unique<FakeGiteaServer>();
    if (!m_server->listen() || !m_stranger.listen())
        return false;
    reset();
    return m_simulation && m_simulation->isValid();
}

QString TestGitea::url() const
{
    return m_server ? m_server->baseUrl().toString() : QString();
}

QString TestGitea::token() const
{
    return viewerToken;
}

void TestGitea::configure()
{
    m_stores.settings.setInstanceURL(url());
    m_stores.settings.setToken(viewerToken);
}

void TestGitea::answer(const QString &method, const QString &path, int status, const QString &body,
                       int delayMs)
{
    FakeResponse response = FakeResponse::json(body.toUtf8(), status);
    response.delay = std::chrono::milliseconds(delayMs);
    m_server->route(method.toLatin1(), path, response);
}

void TestGitea::answerPaged(const QString &path, const QString &itemsJson, int pageSize)
{
    m_server->route("GET", path,
                    pagedAnswer(QJsonDocument::fromJson(itemsJson.toUtf8()).array(), pageSize,
                                "http://" + m_stranger.address().toLatin1()));
}

void TestGitea::reset()
{
    releaseWorkers();
    install(fixtures::read(QStringLiteral("gitea/seed.json")));
}

void TestGitea::holdWorkers()
{
    if (!m_heldWorkers)
        m_heldWorkers = std::make_unique<BusyPool>(ui::TextChunksModel::splittingThread());
}

void TestGitea::releaseWorkers()
{
    m_heldWorkers.reset();
}

void TestGitea::useHostileSeed()
{
    install(m_stranger.hostileSeed());
}

void TestGitea::install(const QByteArray &seed)
{
    m_simulation.reset();
    m_server->clearRoutes();
    m_server->clearRequests();
    m_stranger.forget();
    m_openedLinks.clear();
    m_simulation = std::make_unique<GiteaSimulation>(seed);
    if (!m_simulation->isValid())
        qWarning("The simulated Gitea cannot read its seed: %s",
                 qPrintable(m_simulation->loadError()));
    m_simulation->install(m_server.get());
    emit strangerContactsChanged();
}

void TestGitea::recordOpenedLink(const QUrl &url)
{
    m_openedLinks.append(url.toString());
}

QVariantMap TestGitea::pullRequest(const QString &owner, const QString &repo, int number) const
{
    const std::optional<QJsonObject> pull = m_simulation->pullRequest(owner, repo, number);
    return pull ? pull->toVariantMap() : QVariantMap();
}

int TestGitea::requestCount(const QString &method, const QString &path) const
{
    return int(m_server->requests(method.toLatin1(), path).size());
}

int TestGitea::totalRequestCount() const
{
    return int(m_server->requests().size());
}

QString TestGitea::lastBody(const QString &method, const QString &path) const
{
    const QList<RecordedRequest> requests = m_server->requests(method.toLatin1(), path);
    return requests.isEmpty() ? QString() : QString::fromUtf8(requests.constLast().body);
}

QVariant TestGitea::keychainValue(const QString &key) const
{
    // What the keychain holds once the writes asked for so far are done.
    runToEnd(m_stores.settings.settle());
    const std::optional<QString> value = keychainGet(key);
    return value ? QVariant(*value) : QVariant();
}

int TestGitea::storedLogCount() const
{
    // As after a normal exit, which writes the log's last lines.
    m_stores.log.flush();
    return LogStore().count();
}

bool TestGitea::hasStoredLog() const
{
    m_stores.log.flush();
    return defaultsStore().contains(QString(LogStore::persistKey));
}

void TestGitea::log(const QString &message, const QString &level) const
{
    const LogLevel logLevel = level == u"ERROR"  ? LogLevel::Error
                              : level == u"WARN" ? LogLevel::Warn
                                                 : LogLevel::Info;
    m_stores.log.log(logLevel, message);
}

QUrl TestGitea::temporaryFileUrl(const QString &name) const
{
    return QUrl::fromLocalFile(m_folder.filePath(name));
}

QString TestGitea::readFile(const QUrl &fileUrl) const
{
    QFile file(fileUrl.toLocalFile());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace kestrine::testing
