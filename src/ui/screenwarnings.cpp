#include "screenwarnings.h"

#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>

namespace kestrine::ui {
namespace {

// Each names one way a screen breaks; the texts are Qt's own, as Qt 6.4 prints them.
const QRegularExpression &brokenScreen()
{
    static const QRegularExpression pattern(QStringLiteral(
        "Error decoding|Unsupported image format|Cannot open: |Failed to get image|"
        "ReferenceError|TypeError|SyntaxError|Binding loop detected|"
        "Cannot assign|Unable to assign|is not a type|is not installed|[Ff]ailed to load|"
        "Cannot load library|Could not load|Cannot create|Component is not ready|"
        "Type .* unavailable|plugin cannot be loaded|Could not find the Qt platform plugin|"
        "missing font family"));
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

void BrokenScreenMessages::clear()
{
    const QMutexLocker lock(&collectedMutex());
    collectedMessages().clear();
}

} // namespace kestrine::ui
