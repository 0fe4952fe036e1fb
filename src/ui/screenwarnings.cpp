#include "screenwarnings.h"

#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>

namespace kestrine::ui {
namespace {

// The pattern is the build's (KESTRINE_BROKEN_SCREEN_PATTERN in the top CMakeLists.txt), which
// the screens' tests match against their output as well.
const QRegularExpression &brokenScreen()
{
    static const QRegularExpression pattern(QStringLiteral(KESTRINE_BROKEN_SCREEN_PATTERN));
    return pattern;
}

QtMessageHandler previousHandler = nullptr;
bool installed = false;

QMutex &collectedMutex()
{
    static QMutex mutex;
    return mutex;
}

QStringList &collectedMessages()
{
    static QStringList messages;
    return messages;
}

void collect(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (isBrokenScreenMessage(type, message)) {
        const QMutexLocker lock(&collectedMutex());
        collectedMessages().append(message);
    }
    if (previousHandler)
        previousHandler(type, context, message);
}

} // namespace

bool isBrokenScreenMessage(QtMsgType type, QStringView message)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return false;
    return brokenScreen().match(message).hasMatch();
}

void BrokenScreenMessages::install()
{
    if (installed)
        return;
    installed = true;
    previousHandler = qInstallMessageHandler(collect);
}

QStringList BrokenScreenMessages::collected()
{
    const QMutexLocker lock(&collectedMutex());
    return collectedMessages();
}

} // namespace kestrine::ui
