#include "installtools.h"

#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>

namespace kestrine::testing {

ToolResult runTool(const QString &program, const QStringList &arguments,
                   const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAll())};
}

QString readText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString iniValue(const QString &text, const QString &key)
{
    for (const QString &line : text.split(u'\n')) {
        if (line.startsWith(key + u'='))
            return line.mid(key.size() + 1);
    }
    return {};
}

QStringList installInto(const QString &stagingDir, const QString &prefix, const QString &component)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DESTDIR"), stagingDir);
    QStringList arguments{QStringLiteral("--install"), QStringLiteral(KESTRINE_BUILD_DIR),
                          QStringLiteral("--prefix"), prefix};
    if (!component.isEmpty())
        arguments << QStringLiteral("--component") << component;
    const ToolResult result =
        runTool(QStringLiteral(KESTRINE_CMAKE_COMMAND), arguments, environment);
    if (result.exitCode != 0) {
        qWarning().noquote() << result.output;
        return {};
    }
    QStringList files;
    QDirIterator it(stagingDir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(QDir(stagingDir).relativeFilePath(it.next()));
    files.sort();
    return files;
}

} // namespace kestrine::testing
