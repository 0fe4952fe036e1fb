#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Standard input, output and error as the commands use them: text goes out as UTF-8 and is
/// flushed at once so that output and errors interleave in the order written.
///
/// What the commands print holds texts strangers wrote (titles, names, error messages). A
/// terminal obeys control characters in them: an escape sequence can retitle the window, write
/// the clipboard or hide a line, a carriage return overwrite what came before. So write(),
/// printLine() and printError() show every control character but the line break and the tab as
/// a visible sign instead (visibleControls()); only writeVerbatim() and writeBytes() pass text on
/// untouched.
namespace kestrine::cli::console {

/// `text` with each control character other than "\n" and "\t" replaced by a visible sign: a C0
/// character or DEL by its Unicode control picture ("\x1b" reads "␛", "\r" reads "␍"), a C1
/// character by U+FFFD.
QString visibleControls(const QString &text);

/// Writes `bytes` to standard output unchanged.
void writeBytes(const QByteArray &bytes);
/// Writes `text` to standard output exactly as it is: for output the user asked for verbatim (a
/// diff, a job log), which may hold escape sequences on purpose.
void writeVerbatim(const QString &text);
/// Writes `text`, its control characters made visible, to standard output, adding nothing.
void write(const QString &text);
/// Writes `text`, its control characters made visible, and a line break to standard output.
void printLine(const QString &text);
/// Writes `text`, its control characters made visible, and a line break to standard error.
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
