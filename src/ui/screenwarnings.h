#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <QtGlobal>

namespace kestrine::ui {

/// Whether a message of Qt or of the QML engine says that something on screen is broken: an
/// image that does not decode (a missing image plugin draws no icons), a component, QML file,
/// module or plugin that does not load, an error in a binding or script (ReferenceError,
/// TypeError), a binding loop, a value that cannot be assigned, a font the screens name that is
/// not installed. Debug and info messages never are.
bool isBrokenScreenMessage(QtMsgType type, QStringView message);

/// Collects the broken-screen messages of the whole process from the moment it is installed, and
/// passes every message on to the handler that was there before. For the screens' tests and the
/// screenshot tour, which fail when anything was collected.
class BrokenScreenMessages
{
public:
    /// Starts collecting. Installing again is harmless: the handler is installed once.
    static void install();
    static QStringList collected();
};

} // namespace kestrine::ui
