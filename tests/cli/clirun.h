#pragma once

#include "logstore.h"

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <chrono>

namespace kestrine::testing {

/// What one run of kestrine-cli left.
struct CliResult
{
    /// -1 when the process did not finish in time (it is killed then) or crashed.
    int exitCode = -1;
    QByteArray out;
    QByteArray err;

    QString outText() const { return QString::fromUtf8(out); }
    QString errText() const { return QString::fromUtf8(err); }
};

/// Runs kestrine-cli as a real process, the way a user, a script or the systemd timer does, with
/// a home of its own: HOME and every XDG directory point into one temporary folder, so that what
/// it writes can be read back (and searched). The session bus and with it the keychain are the
/// test's own (run-isolated --keyring).
///
/// While a run lasts the test's event loop keeps turning, so that a fake server in the test
/// process can answer the requests.
class CliRunner
{
public:
    CliRunner();

    /// The environment every run gets; add KESTRINE_URL, KESTRINE_TOKEN etc. here.
    QProcessEnvironment environment;

    /// Runs `arguments`, feeding `input` to standard input and then closing it.
    CliResult run(const QStringList &arguments, const QByteArray &input = {},
                  std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;

    /// Starts a run without waiting, for tests that look at the process while it runs. Standard
    /// input stays open.
    void start(QProcess &process, const QStringList &arguments) const;
    /// Waits for a started run to end and collects what it left.
    static CliResult finish(QProcess &process,
                            std::chrono::milliseconds timeout = std::chrono::seconds(20));

    /// The root of every directory the runs write to.
    QString root() const { return m_root.path(); }
    QString configHome() const { return m_root.filePath(QStringLiteral("config")); }
    QString cacheHome() const { return m_root.filePath(QStringLiteral("cache")); }
    /// The app's caches: $XDG_CACHE_HOME/norrum/kestrine.
    QString appCacheDirectory() const;
    /// The defaults file the app and kestrine-cli share: $XDG_CONFIG_HOME/norrum/kestrine.json.
    QString defaultsFilePath() const;
    /// The defaults file as a JSON object; empty when there is none.
    QJsonObject defaults() const;
    /// The log store's entries as they are stored in the defaults file, oldest first.
    QList<LogEntry> storedLog() const;
    /// Each stored entry as "LEVEL message".
    QStringList storedLogLines() const;

    /// The executable under test.
    static QString program();

private:
    QTemporaryDir m_root;
};

/// "LEVEL message" for each entry.
QStringList logLines(const QList<LogEntry> &entries);

} // namespace kestrine::testing
