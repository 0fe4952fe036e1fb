#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace kestrine::cli {

/// A wrong command line. Its message never repeats an argument's value (it might be a token typed
/// in the wrong place), only option and command names.
class UsageError : public std::exception
{
public:
    explicit UsageError(QString message);
    const QString &message() const { return m_message; }
    const char *what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_message;
    QByteArray m_utf8;
};

/// An option a command accepts: a flag such as "--json", or "--method VALUE" when `valueName`
/// is set.
struct OptionSpec
{
    QString name;
    QString valueName;
    QString help;

    bool takesValue() const { return !valueName.isEmpty(); }
};

/// What a command takes: positional arguments (the required ones first, then the optional ones)
/// and options.
struct CommandSyntax
{
    QStringList required;
    QStringList optional;
    QList<OptionSpec> options;

    /// E.g. "OWNER/REPO NUMBER [TEXT] [--method METHOD]"; optional arguments form one group, as
    /// they are filled from the left.
    QString synopsis() const;
};

/// One command's arguments, checked against its syntax. Options may stand anywhere among the
/// positional arguments, as "--name VALUE" or "--name=VALUE"; "--" ends the options, and "-"
/// alone is a positional argument (standard input, where a command says so).
class Arguments
{
public:
    Arguments() = default;
    /// Throws UsageError for an unknown option, a missing option value, or too few or too many
    /// positional arguments.
    static Arguments parse(const QStringList &arguments, const CommandSyntax &syntax);

    const QStringList &positionals() const { return m_positionals; }
    /// The positional argument at `index`, or nothing when it was left out.
    std::optional<QString> positional(qsizetype index) const;
    bool isSet(const QString &option) const { return m_flags.contains(option); }
    std::optional<QString> value(const QString &option) const;

private:
    QStringList m_positionals;
    QSet<QString> m_flags;
    QHash<QString, QString> m_values;
};

/// Whether `arguments` ask for help ("--help" or "-h" before any "--").
bool asksForHelp(const QStringList &arguments);

} // namespace kestrine::cli
