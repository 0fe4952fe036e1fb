// login, logout and settings: the settings store's values, as the app's settings screen edits them.

#include "command.h"
#include "console.h"
#include "exitcode.h"
#include "jsonoutput.h"
#include "session.h"
#include "settingsstore.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <functional>

namespace kestrine::cli {
namespace {

const QString jsonOption = QStringLiteral("--json");
const QString urlOption = QStringLiteral("--url");

QString gateModeWord(MergeGateMode mode)
{
    return mode == MergeGateMode::Block ? QStringLiteral("block") : QStringLiteral("warn");
}

QString boolWord(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

bool parseBool(const QString &key, const QString &value)
{
    if (value == u"true")
        return true;
    if (value == u"false")
        return false;
    throw UsageError(QCoreApplication::translate("CliSettings", "%1 is true or false").arg(key));
}

/// "owner/name,owner/name": blanks around a name are dropped, and an empty text means every
/// repository.
QStringList parseRepositoryList(const QString &value)
{
    QStringList names;
    for (const QString &piece : value.split(u',', Qt::SkipEmptyParts)) {
        const QString name = piece.trimmed();
        if (name.isEmpty())
            continue;
        const QStringList parts = name.split(u'/');
        if (parts.size() != 2 || parts[0].isEmpty() || parts[1].isEmpty())
            throw UsageError(QCoreApplication::translate(
                "CliSettings", "monitoredRepos takes full names such as owner/name"));
        names.append(name);
    }
    return names;
}

/// A checked value, ready to be stored.
using Change = std::function<void(SettingsStore &store)>;

/// One setting that `settings KEY VALUE` changes: its key, and how a value is read, which throws
/// UsageError for a wrong one.
struct Setter
{
    QString key;
    Change (*parse)(const QString &key, const QString &value);
};

const QList<Setter> &setters()
{
    static const QList<Setter> all{
        {QString(SettingsStore::mergeGateModeKey),
         [](const QString &key, const QString &value) -> Change {
             if (value != u"warn" && value != u"block")
                 throw UsageError(
                     QCoreApplication::translate("CliSettings", "%1 is warn or block").arg(key));
             const MergeGateMode mode =
                 value == u"block" ? MergeGateMode::Block : MergeGateMode::Warn;
             return [mode](SettingsStore &store) {
                 store.setMergeGateMode(mode);
             };
         }},
        {QString(SettingsStore::deleteBranchAfterMergeKey),
         [](const QString &key, const QString &value) -> Change {
             const bool enabled = parseBool(key, value);
             return [enabled](SettingsStore &store) {
                 store.setDeleteBranchAfterMerge(enabled);
             };
         }},
        {QString(SettingsStore::monitoredReposKey),
         [](const QString &, const QString &value) -> Change {
             const QStringList repos = parseRepositoryList(value);
             return [repos](SettingsStore &store) {
                 store.setMonitoredRepos(repos);
             };
         }},
        {QString(SettingsStore::notificationsEnabledKey),
         [](const QString &key, const QString &value) -> Change {
             const bool enabled = parseBool(key, value);
             return [enabled](SettingsStore &store) {
                 store.setNotificationsEnabled(enabled);
             };
         }},
    };
    return all;
}

/// The change `settings KEY VALUE` asks for; throws UsageError for an unknown key or a wrong
/// value.
Change parseChange(const QString &key, const QString &value)
{
    for (const Setter &setter : setters()) {
        if (setter.key == key)
            return setter.parse(key, value);
    }
    throw UsageError(
        QCoreApplication::translate("CliSettings", "%1 is not a setting that can be changed here")
            .arg(key));
}

void printSettings(const SettingsStore &store)
{
    const QList<std::pair<QString, QString>> rows{
        {QString(SettingsStore::instanceURLKey), store.instanceURL()},
        {QStringLiteral("isConfigured"), boolWord(store.isConfigured())},
        {QString(SettingsStore::mergeGateModeKey), gateModeWord(store.mergeGateMode())},
        {QString(SettingsStore::deleteBranchAfterMergeKey),
         boolWord(store.deleteBranchAfterMerge())},
        {QString(SettingsStore::monitoredReposKey), store.monitoredRepos().join(u',')},
        {QString(SettingsStore::notificationsEnabledKey), boolWord(store.notificationsEnabled())},
    };
    for (const auto &[key, value] : rows)
        console::printLine(key + u'\t' + value);
}

QJsonObject settingsJson(const SettingsStore &store)
{
    return {
        {QString(SettingsStore::instanceURLKey), store.instanceURL()},
        {QStringLiteral("isConfigured"), store.isConfigured()},
        {QString(SettingsStore::mergeGateModeKey), gateModeWord(store.mergeGateMode())},
        {QString(SettingsStore::deleteBranchAfterMergeKey), store.deleteBranchAfterMerge()},
        {QString(SettingsStore::monitoredReposKey),
         QJsonArray::fromStringList(store.monitoredRepos())},
        {QString(SettingsStore::notificationsEnabledKey), store.notificationsEnabled()},
    };
}

QCoro::Task<int> runLogin(Arguments arguments, Session &session)
{
    const QString url = arguments.value(urlOption).value_or(QString()).trimmed();
    if (url.isEmpty())
        throw UsageError(
            QCoreApplication::translate("CliSettings", "login needs --url with the instance URL"));
    // The token never comes from the command line, where other users can read it.
    const std::optional<QString> token =
        console::readLine(QCoreApplication::translate("CliSettings", "Token: "), false);
    if (!token)
        throw UsageError(QCoreApplication::translate("CliSettings", "no token on standard input"));
    if (token->isEmpty()) {
        throw UsageError(
            QCoreApplication::translate("CliSettings", "the token on standard input is empty"));
    }
    SettingsStore &store = session.settings();
    store.setInstanceURL(url);
    store.setToken(*token);
    co_return ExitCode::Success;
}

QCoro::Task<int> runLogout(Arguments, Session &session)
{
    session.settings().logout();
    co_return ExitCode::Success;
}

QCoro::Task<int> runSettings(Arguments arguments, Session &session)
{
    const std::optional<QString> key = arguments.positional(0);
    if (!key) {
        const SettingsStore &store = session.settings();
        if (arguments.isSet(jsonOption))
            printJson(settingsJson(store));
        else
            printSettings(store);
        co_return ExitCode::Success;
    }
    if (arguments.isSet(jsonOption))
        throw UsageError(
            QCoreApplication::translate("CliSettings", "--json is for printing the settings"));
    const std::optional<QString> value = arguments.positional(1);
    if (!value)
        throw UsageError(
            QCoreApplication::translate("CliSettings", "settings %1 needs a value").arg(*key));
    const Change change = parseChange(*key, *value);
    change(session.settings());
    co_return ExitCode::Success;
}

} // namespace

Command loginCommand()
{
    return {
        QStringLiteral("login"),
        QCoreApplication::translate(
            "CliSettings", "Store the instance URL and the access token read from standard input"),
        {{},
         {},
         {{urlOption, QCoreApplication::translate("CliPlaceholder", "URL"),
           QCoreApplication::translate("CliSettings", "the Gitea instance's URL")}}},
        QCoreApplication::translate(
            "CliSettings", "The token is the first line of standard input (on a terminal it is "
                           "asked for and not shown);\n"
                           "it is never taken from the command line. Both values go to the "
                           "keychain, as the app's\n"
                           "settings screen saves them; nothing is sent to the server."),
        runLogin,
    };
}

Command logoutCommand()
{
    return {
        QStringLiteral("logout"),
        QCoreApplication::translate("CliSettings", "Remove the stored instance URL and token"),
        {},
        //: "Log out" is the settings screen's button: say it as the app's translation does.
        QCoreApplication::translate(
            "CliSettings", "Deletes both from the keychain and stores the default instance URL "
                           "and an empty token,\n"
                           "as the app's \"Log out\" does. The other settings stay."),
        runLogout,
    };
}

Command settingsCommand()
{
    return {
        QStringLiteral("settings"),
        QCoreApplication::translate("CliSettings", "Print the settings, or change one"),
        {{},
         {QCoreApplication::translate("CliPlaceholder", "KEY"),
          QCoreApplication::translate("CliPlaceholder", "VALUE")},
         {{jsonOption,
           {},
           QCoreApplication::translate("CliSettings", "print the settings as a JSON object")}}},
        //: The keys and the values warn, block, true and false stay as they are.
        QCoreApplication::translate(
            "CliSettings", "Without arguments prints every setting but the token, one per line "
                           "as KEY<TAB>VALUE.\n"
                           "With KEY and VALUE changes one setting and stores it at once:\n"
                           "  mergeGateMode           warn or block (merging while CI is red)\n"
                           "  deleteBranchAfterMerge  true or false\n"
                           "  notificationsEnabled    true or false (the background check)\n"
                           "  monitoredRepos          full names separated by commas, such as "
                           "ann/tool,cy/infra;\n"
                           "                          empty for every repository\n"
                           "The instance URL and the token are changed with login and logout."),
        runSettings,
    };
}

} // namespace kestrine::cli
