#include "clirun.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QSignalSpy>

namespace kestrine::testing {

CliRunner::CliRunner()
    : environment(QProcessEnvironment::systemEnvironment())
{
    for (const char *name : {"config", "cache", "data", "state", "home"})
        QDir(m_root.path()).mkpath(QString::fromLatin1(name));
    environment.insert(QStringLiteral("HOME"), m_root.filePath(QStringLiteral("home")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome());
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), cacheHome());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_root.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), m_root.filePath(QStringLiteral("state")));
    // Whatever the test was started with, runs see only what a test puts here.
    environment.remove(QStringLiteral("KESTRINE_URL"));
    environment.remove(QStringLiteral("KESTRINE_TOKEN"));
    // Nor is a page ever handed to the browser of whoever runs the tests.
    environment.remove(QStringLiteral("BROWSER"));
}

QString CliRunner::program()
{
    return QStringLiteral(KESTRINE_CLI_PATH);
}

void CliRunner::start(QProcess &process, const QStringList &arguments) const
{
    process.setProcessEnvironment(environment);
    process.setProgram(program());
    process.setArguments(arguments);
    process.start();
}

CliResult CliRunner::finish(QProcess &process, std::chrono::milliseconds timeout)
{
    CliResult result;
    if (process.state() != QProcess::NotRunning) {
        QSignalSpy finished(&process, &QProcess::finished);
        if (!finished.wait(int(timeout.count()))) {
            process.kill();
            process.waitForFinished(5000);
            result.out = process.readAllStandardOutput();
            result.err = process.readAllStandardError();
            return result;
        }
    }
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    if (process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    return result;
}

CliResult CliRunner::run(const QStringList &arguments, const QByteArray &input,
                         std::chrono::milliseconds timeout) const
{
    QProcess process;
    start(process, arguments);
    if (!process.waitForStarted(10000))
        return {};
    if (!input.isEmpty())
        process.write(input);
    process.closeWriteChannel();
    return finish(process, timeout);
}

QString CliRunner::appCacheDirectory() const
{
    return cacheHome() + QStringLiteral("/norrum/kestrine");
}

QString CliRunner::defaultsFilePath() const
{
    return configHome() + QStringLiteral("/norrum/kestrine.json");
}

QJsonObject CliRunner::defaults() const
{
    QFile file(defaultsFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

QList<LogEntry> CliRunner::storedLog() const
{
    // The defaults file keeps byte arrays as {"$data": "<base64>"}.
    const QJsonValue stored = defaults().value(QString(LogStore::persistKey));
    const QByteArray base64 =
        stored.toObject().value(QStringLiteral("$data")).toString().toLatin1();
    return LogStore::decode(QByteArray::fromBase64(base64));
}

QStringList CliRunner::storedLogLines() const
{
    return logLines(storedLog());
}

QStringList logLines(const QList<LogEntry> &entries)
{
    QStringList lines;
    for (const LogEntry &entry : entries)
        lines.append(entry.levelLabel() + u' ' + entry.message);
    return lines;
}

} // namespace kestrine::testing
