#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Standard input, output and error as the commands use them: text goes out as UTF-8, exactly as
/// given, and is flushed at once so that output and errors interleave in the order written.
namespace kestrine::cli::console {

/// Writes `bytes` to standard output unchanged.
void writeBytes(const QByteArray &bytes);
/// Writes `text` to standard output, without adding anything.
void write(const QString &text);
/// Writes `text` and a line break to standard output.
void printLine(const QString &text);
/// Writes `text` and a line break to standard error.
void printError(const QString &text);

bool inputIsTerminal();
bool errorIsTerminal();

/// One line of standard input without its line break ("\n", or "\r\n"); nothing at the end of
/// the input. On a terminal `prompt` is shown on standard error first, and with `echo` false
/// what is typed does not appear (for secrets).
std::optional<QString> readLine(const QString &prompt = {}, bool echo = true);

/// The rest of standard input.
QString readAll();

} // namespace kestrine::cli::console
