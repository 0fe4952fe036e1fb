#include "arguments.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

const OptionSpec *findOption(const CommandSyntax &syntax, const QString &name)
{
    for (const OptionSpec &option : syntax.options) {
        if (option.name == name)
            return &option;
    }
    return nullptr;
}

} // namespace

UsageError::UsageError(QString message)
    : m_message(std::move(message))
    , m_utf8(m_message.toUtf8())
{}

QString CommandSyntax::synopsis() const
{
    QStringList parts = required;
    if (!optional.isEmpty())
        parts.append(u'[' + optional.join(u' ') + u']');
    for (const OptionSpec &option : options) {
        parts.append(option.takesValue()
                         ? QStringLiteral("[%1 %2]").arg(option.name, option.valueName)
                         : QStringLiteral("[%1]").arg(option.name));
    }
    return parts.join(u' ');
}

Arguments Arguments::parse(const QStringList &arguments, const CommandSyntax &syntax)
{
    Arguments parsed;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (optionsEnded || argument == u"-" || !argument.startsWith(u'-')) {
            parsed.m_positionals.append(argument);
            continue;
        }
        if (argument == u"--") {
            optionsEnded = true;
            continue;
        }
        const qsizetype equals = argument.indexOf(u'=');
        const QString name = equals < 0 ? argument : argument.left(equals);
        const OptionSpec *option = findOption(syntax, name);
        if (!option)
            throw UsageError(
                QCoreApplication::translate("CliArguments", "unknown option %1").arg(name));
        if (!option->takesValue()) {
            if (equals >= 0)
                throw UsageError(
                    QCoreApplication::translate("CliArguments", "%1 takes no value").arg(name));
            parsed.m_flags.insert(name);
            continue;
        }
        if (equals >= 0) {
            parsed.m_values.insert(name, argument.mid(equals + 1));
        } else if (i + 1 < arguments.size()) {
            parsed.m_values.insert(name, arguments.at(++i));
        } else {
            throw UsageError(QCoreApplication::translate("CliArguments", "%1 needs a value (%2)")
                                 .arg(name, option->valueName));
        }
    }
    if (parsed.m_positionals.size() < syntax.required.size()) {
        throw UsageError(QCoreApplication::translate("CliArguments", "missing %1")
                             .arg(syntax.required.mid(parsed.m_positionals.size()).join(u' ')));
    }
    if (parsed.m_positionals.size() > syntax.required.size() + syntax.optional.size())
        throw UsageError(QCoreApplication::translate("CliArguments", "too many arguments"));
    return parsed;
}

std::optional<QString> Arguments::positional(qsizetype index) const
{
    if (index < 0 || index >= m_positionals.size())
        return std::nullopt;
    return m_positionals.at(index);
}

std::optional<QString> Arguments::value(const QString &option) const
{
    const auto it = m_values.constFind(option);
    if (it == m_values.cend())
        return std::nullopt;
    return *it;
}

bool asksForHelp(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument == u"--")
            return false;
        if (argument == u"--help" || argument == u"-h")
            return true;
    }
    return false;
}

} // namespace kestrine::cli
