#include "console.h"

#include <algorithm>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace kestrine::cli::console {
namespace {

void writeTo(std::FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

/// Turns the terminal's echo off for its lifetime; does nothing when input is not a terminal.
class EchoOff
{
public:
    EchoOff()
    {
        if (tcgetattr(STDIN_FILENO, &m_saved) != 0)
            return;
        termios quiet = m_saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        m_active = tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet) == 0;
    }
    ~EchoOff()
    {
        if (!m_active)
            return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_saved);
        // The user's Enter was not echoed either.
        writeTo(stderr, "\n");
    }
    EchoOff(const EchoOff &) = delete;
    EchoOff &operator=(const EchoOff &) = delete;

private:
    termios m_saved{};
    bool m_active = false;
};

std::optional<QByteArray> readRawLine()
{
    QByteArray line;
    bool readAnything = false;
    for (int c = std::getchar(); c != EOF; c = std::getchar()) {
        readAnything = true;
        if (c == '\n')
            break;
        line.append(char(c));
    }
    if (!readAnything)
        return std::nullopt;
    if (line.endsWith('\r'))
        line.chop(1);
    return line;
}

} // namespace

QString visibleControls(const QString &text)
{
    const auto isHidden = [](QChar c) {
        const char16_t u = c.unicode();
        return (u < 0x20 && u != u'\n' && u != u'\t') || (u >= 0x7f && u <= 0x9f);
    };
    if (std::none_of(text.cbegin(), text.cend(), isHidden))
        return text;
    QString visible = text;
    for (QChar &c : visible) {
        if (!isHidden(c))
            continue;
        const char16_t u = c.unicode();
        // U+2400 to U+241F picture the C0 characters in order, U+2421 pictures DEL.
        c = u < 0x20 ? QChar(char16_t(0x2400 + u)) : u == 0x7f ? QChar(0x2421) : QChar(0xfffd);
    }
    return visible;
}

void writeBytes(const QByteArray &bytes)
{
    writeTo(stdout, bytes);
}

void writeVerbatim(const QString &text)
{
    writeTo(stdout, text.toUtf8());
}

void write(const QString &text)
{
    writeTo(stdout, visibleControls(text).toUtf8());
}

void printLine(const QString &text)
{
    writeTo(stdout, visibleControls(text).toUtf8() + '\n');
}

void printError(const QString &text)
{
    writeTo(stderr, visibleControls(text).toUtf8() + '\n');
}

bool inputIsTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

bool errorIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

std::optional<QString> readLine(const QString &prompt, bool echo)
{
    std::optional<EchoOff> echoOff;
    if (inputIsTerminal()) {
        if (!prompt.isEmpty())
            writeTo(stderr, prompt.toUtf8());
        if (!echo)
            echoOff.emplace();
    }
    const std::optional<QByteArray> line = readRawLine();
    if (!line)
        return std::nullopt;
    return QString::fromUtf8(*line);
}

QString readAll()
{
    QByteArray all;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, stdin)) > 0;)
        all.append(buffer, qsizetype(n));
    return QString::fromUtf8(all);
}

} // namespace kestrine::cli::console
