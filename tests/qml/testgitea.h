#pragma once

#include "busypool.h"
#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "strangerhost.h"
#include "teststores.h"

#include <QObject>
#include <QTemporaryDir>
#include <QVariant>
#include <memory>

namespace kestrine::testing {

/// What the screen tests reach as `gitea`: the simulated Gitea of tests/data/gitea/seed.json on
/// 127.0.0.1, the screens' settings pointed at it, answers a test scripts over the simulation's,
/// and what the app left in its stores. It holds the log and the settings that the screens' engine
/// is given, made the way the app makes them: create it once the storage mode is chosen.
class TestGitea : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString url READ url CONSTANT)
    Q_PROPERTY(QString token READ token CONSTANT)
    /// How many times something connected to the stranger's host of the hostile seed.
    Q_PROPERTY(int strangerContacts READ strangerContacts NOTIFY strangerContactsChanged)

public:
    explicit TestGitea(QObject *parent = nullptr);
    ~TestGitea() override;

    /// The screens' log and settings.
    TestStores &stores() { return m_stores; }

    /// Starts the server; false when the seed cannot be read or no port opened.
    bool start();

    QString url() const;
    /// The seed's token of its viewer, "ann".
    QString token() const;

    /// Points the screens' settings at this server, signed in as ann.
    Q_INVOKABLE void configure();

    /// From now on `method` requests for `path` (e.g. "/api/v1/repos/ann/tool/pulls/9/files")
    /// get this answer instead of the simulation's; `delayMs` holds it back.
    Q_INVOKABLE void answer(const QString &method, const QString &path, int status,
                            const QString &body, int delayMs = 0);
    /// From now on GET requests for `path` get the JSON array `itemsJson` in pages of
    /// `pageSize` (the `page` query from 1), each page but the last naming the next in a "Link"
    /// header written with the stranger's host (as a Gitea behind a proxy writes its links), and
    /// every page carrying "X-Total-Count".
    Q_INVOKABLE void answerPaged(const QString &path, const QString &itemsJson, int pageSize);
    /// Back to the simulation's answers, with its state as the seed has it, and no requests
    /// recorded.
    Q_INVOKABLE void reset();
    /// Like reset(), with the hostile seed (tests/data/gitea/hostile-seed.json), whose every
    /// text was written by a stranger and whose addresses point at a host of this test.
    Q_INVOKABLE void useHostileSeed();
    int strangerContacts() const { return m_stranger.contacts(); }
    /// The first line of each request the stranger's host received.
    Q_INVOKABLE QStringList strangerRequests() const { return m_stranger.requestLines(); }
    /// The stranger's address, "127.0.0.1:<port>".
    Q_INVOKABLE QString strangerHost() const { return m_stranger.address(); }

    /// Links handed to the desktop's opener since the last reset, in order. The test process
    /// answers every scheme itself, so nothing is really opened.
    Q_INVOKABLE QStringList openedLinks() const { return m_openedLinks; }

    /// Pull request `number` of `owner`/`repo` as the simulation answers for it now, as a
    /// JavaScript object; empty when there is none.
    Q_INVOKABLE QVariantMap pullRequest(const QString &owner, const QString &repo,
                                        int number) const;

    /// How many `method` requests for `path` arrived (the path as decoded, without the query).
    Q_INVOKABLE int requestCount(const QString &method, const QString &path) const;
    /// How many requests of any kind arrived.
    Q_INVOKABLE int totalRequestCount() const;
    /// The body of the last such request; "" when there was none.
    Q_INVOKABLE QString lastBody(const QString &method, const QString &path) const;

    /// What the keychain holds under `key`: a text, or null when there is no item.
    Q_INVOKABLE QVariant keychainValue(const QString &key) const;
    /// The number of entries a log read afresh from the defaults store holds, as after a
    /// restart; and whether the store holds a log at all.
    Q_INVOKABLE int storedLogCount() const;
    Q_INVOKABLE bool hasStoredLog() const;
    /// Appends a line to the screens' log at "INFO", "WARN" or "ERROR".
    Q_INVOKABLE void log(const QString &message,
                         const QString &level = QStringLiteral("INFO")) const;

    /// A file URL in a folder of this test run, and what a file holds.
    Q_INVOKABLE QUrl temporaryFileUrl(const QString &name) const;
    Q_INVOKABLE QString readFile(const QUrl &fileUrl) const;
    /// `text` with every ESC character, for building escape sequences in QML.
    Q_INVOKABLE QString escape() const { return QStringLiteral("\x1b"); }

    /// Keeps the worker thread that cuts long logs into pieces busy until releaseWorkers() or
    /// the next reset, so that a log handed to it waits and a test sees the screen meanwhile.
    Q_INVOKABLE void holdWorkers();
    Q_INVOKABLE void releaseWorkers();

signals:
    void strangerContactsChanged();

private slots:
    void recordOpenedLink(const QUrl &url);

private:
    void install(const QByteArray &seed);

    // Mutable: the const readers of what is stored write the log's waiting lines first.
    mutable TestStores m_stores;
    std::unique_ptr<FakeGiteaServer> m_server;
    std::unique_ptr<GiteaSimulation> m_simulation;
    QTemporaryDir m_folder;
    StrangerHost m_stranger;
    QStringList m_openedLinks;
    std::unique_ptr<BusyPool> m_heldWorkers;
};

} // namespace kestrine::testing
