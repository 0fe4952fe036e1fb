#include "help.h"

#include <QCoreApplication>

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
    const QList<std::pair<QString, QString>> optionRows{
        {QStringLiteral("--demo"),
         QCoreApplication::translate(
             "CliHelp", "use the built-in demo instance; nothing of yours is read or written")},
        {QStringLiteral("--help, -h"), QCoreApplication::translate("CliHelp", "show this help")},
        {QStringLiteral("--version"), QCoreApplication::translate("CliHelp", "show the version")},
    };
    const QList<std::pair<QString, QString>> environmentRows{
        {QStringLiteral("KESTRINE_URL"),
         QCoreApplication::translate("CliHelp",
                                     "the instance URL for this run, instead of the stored one")},
        {QStringLiteral("KESTRINE_TOKEN"),
         QCoreApplication::translate(
             "CliHelp", "the access token for this run, instead of the stored one; never stored")},
        {QStringLiteral("XDG_CONFIG_HOME"),
         QCoreApplication::translate("CliHelp",
                                     "holds norrum/kestrine.json: the settings and the log")},
        {QStringLiteral("XDG_CACHE_HOME"),
         QCoreApplication::translate(
             "CliHelp", "holds norrum/kestrine/: the inbox cache and the notification state")},
        {QStringLiteral("BROWSER"),
         QCoreApplication::translate("CliHelp",
                                     "what open hands a page to where xdg-open is not installed")},
    };

    // A titled table without its last line break, to stand as a paragraph.
    const auto section = [](const QString &title, const QList<std::pair<QString, QString>> &rows) {
        return title + u'\n' + table(rows).chopped(1);
    };
    // Paragraphs apart by an empty line, each one text to translate, with its lines broken where
    // the language needs.
    const QStringList paragraphs{
        QCoreApplication::translate("CliHelp", "Usage: %1 [--demo] COMMAND [ARGUMENTS]")
            .arg(programName),
        QCoreApplication::translate("CliHelp",
                                    "Kestrine on a terminal: the inbox, pull requests and their "
                                    "actions, the settings and the\n"
                                    "log of the Kestrine app, for scripts, CI jobs and the "
                                    "background check of a systemd timer."),
        section(QCoreApplication::translate("CliHelp", "Commands:"), commandRows),
        section(QCoreApplication::translate("CliHelp", "Options:"), optionRows),
        QCoreApplication::translate("CliHelp",
                                    "Run '%1 COMMAND --help' for what a command takes and prints.")
            .arg(programName),
        section(QCoreApplication::translate("CliHelp", "Environment:"), environmentRows),
        QCoreApplication::translate("CliHelp",
                                    "Exit status: 0 success; 1 the operation failed (its error on "
                                    "standard error);\n"
                                    "2 the command line was wrong."),
    };
    return paragraphs.join(QStringLiteral("\n\n")) + u'\n';
}

QString commandHelp(const Command &command)
{
    const QString synopsis = command.syntax.synopsis();
    QString help =
        QCoreApplication::translate("CliHelp", "Usage: %1 %2%3")
            .arg(programName, command.name, synopsis.isEmpty() ? QString() : u' ' + synopsis) +
        QStringLiteral("\n\n") + command.summary + u'\n';
    if (!command.description.isEmpty())
        help += u'\n' + command.description + u'\n';
    if (!command.syntax.options.isEmpty()) {
        QList<std::pair<QString, QString>> rows;
        for (const OptionSpec &option : command.syntax.options) {
            rows.append({option.takesValue() ? option.name + u' ' + option.valueName : option.name,
                         option.help});
        }
        help += u'\n' + QCoreApplication::translate("CliHelp", "Options:") + u'\n' + table(rows);
    }
    return help;
}

QString usageErrorText(const QString &message, const Command *command)
{
    const QString helpCommand = command
                                    ? QStringLiteral("%1 %2 --help").arg(programName, command->name)
                                    : QStringLiteral("%1 --help").arg(programName);
    //: A wrong command line: %1 is the program, %2 what was wrong, %3 the command that shows help.
    return QCoreApplication::translate("CliHelp", "%1: %2\nRun '%3' for usage.")
        .arg(programName, message, helpCommand);
}

} // namespace kestrine::cli
