#include "childrun.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QProcess>

namespace kestrine::testing {

ChildResult runChild(const QString &program, const QStringList &arguments,
                     const QProcessEnvironment &environment)
{
    ChildResult result;
    QProcess child;
    child.setProcessEnvironment(environment);
    QElapsedTimer wall;
    wall.start();
    child.start(program, arguments);
    result.finished = child.waitForFinished(60000);
    result.wallMs = wall.elapsed();
    if (!result.finished) {
        child.kill();
        child.waitForFinished();
    }
    result.exitCode = child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -1;
    const QList<QByteArray> lines = child.readAllStandardOutput().trimmed().split('\n');
    result.output = QJsonDocument::fromJson(lines.last()).object();
    result.stderrText = QString::fromLocal8Bit(child.readAllStandardError());
    return result;
}

QProcessEnvironment environmentWithoutABus(const QString &emptyDir)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                       QStringLiteral("unix:path=") +
                           QDir(emptyDir).filePath(QStringLiteral("no-bus")));
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return environment;
}

} // namespace kestrine::testing
