#include "help.h"

namespace kestrine::cli {
namespace {

/// Two columns: names padded to one width, then their texts.
QString table(const QList<std::pair<QString, QString>> &rows)
{
    qsizetype width = 0;
    for (const auto &[name, text] : rows)
        width = std::max(width, name.size());
    QString out;
    for (const auto &[name, text] : rows)
        out += QStringLiteral("  ") + name.leftJustified(width + 2) + text + u'\n';
    return out;
}

} // namespace

QString programHelp()
{
    QList<std::pair<QString, QString>> commandRows;
    for (const Command &command : commands())
        commandRows.append({command.name, command.summary});

    return QStringLiteral("Usage: %1 [--demo] COMMAND [ARGUMENTS]\n"
                          "\n"
                          "Kestrine on a terminal: the inbox, pull requests and their actions, the "
                          "settings and the\n"
                          "log of the Kestrine app, for scripts, CI jobs and the background check "
                          "of a systemd timer.\n"
                          "\n"
                          "Commands:\n")
               .arg(programName) +
           table(commandRows) +
           QStringLiteral("\n"
                          "Options:\n") +
           table({
               {QStringLiteral("--demo"),
                QStringLiteral("use the built-in demo instance; nothing of yours is read or "
                               "written")},
               {QStringLiteral("--help, -h"), QStringLiteral("show this help")},
               {QStringLiteral("--version"), QStringLiteral("show the version")},
           }) +
           QStringLiteral("\nRun '%1 COMMAND --help' for what a command takes and prints.\n"
                          "\n"
                          "Environment:\n")
               .arg(programName) +
           table({
               {QStringLiteral("KESTRINE_URL"),
                QStringLiteral("the instance URL for this run, instead of the stored one")},
               {QStringLiteral("KESTRINE_TOKEN"),
                QStringLiteral("the access token for this run, instead of the stored one; "
                               "never stored")},
               {QStringLiteral("XDG_CONFIG_HOME"),
                QStringLiteral("holds norrum/kestrine.json: the settings and the log")},
               {QStringLiteral("XDG_CACHE_HOME"),
                QStringLiteral("holds norrum/kestrine/: the inbox cache and the notification "
                               "state")},
               {QStringLiteral("BROWSER"),
                QStringLiteral("what open hands a page to where xdg-open is not installed")},
           }) +
           QStringLiteral("\n"
                          "Exit status: 0 success; 1 the operation failed (its error on standard "
                          "error);\n"
                          "2 the command line was wrong.\n");
}

QString commandHelp(const Command &command)
{
    const QString synopsis = command.syntax.synopsis();
    QString help = QStringLiteral("Usage: %1 %2%3\n\n%4\n")
                       .arg(programName, command.name,
                            synopsis.isEmpty() ? QString() : u' ' + synopsis, command.summary);
    if (!command.description.isEmpty())
        help += u'\n' + command.description + u'\n';
    if (!command.syntax.options.isEmpty()) {
        QList<std::pair<QString, QString>> rows;
        for (const OptionSpec &option : command.syntax.options) {
            rows.append({option.takesValue() ? option.name + u' ' + option.valueName : option.name,
                         option.help});
        }
        help += QStringLiteral("\nOptions:\n") + table(rows);
    }
    return help;
}

QString usageErrorText(const QString &message, const Command *command)
{
    const QString helpCommand = command
                                    ? QStringLiteral("%1 %2 --help").arg(programName, command->name)
                                    : QStringLiteral("%1 --help").arg(programName);
    return QStringLiteral("%1: %2\nRun '%3' for usage.").arg(programName, message, helpCommand);
}

} // namespace kestrine::cli
