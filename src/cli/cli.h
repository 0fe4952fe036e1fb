#pragma once

#include <QStringList>

namespace kestrine::cli {

/// Runs kestrine-cli with `arguments` (the program name first) inside the application's event
/// loop, and answers the exit code. Needs a QCoreApplication that is not running yet.
int run(QStringList arguments);

} // namespace kestrine::cli
