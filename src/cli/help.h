#pragma once

#include "command.h"

#include <QString>

namespace kestrine::cli {

/// The program's name as users type it.
inline const QString programName = QStringLiteral("kestrine-cli");

/// `kestrine-cli --help`: the commands, the global options, the environment and the exit codes.
QString programHelp();
/// `kestrine-cli COMMAND --help`.
QString commandHelp(const Command &command);
/// A usage error's text: the message, then where to find the right usage.
QString usageErrorText(const QString &message, const Command *command = nullptr);

} // namespace kestrine::cli
