// login, logout and settings: the settings store's values, as the app's settings screen edits them.

#include "command.h"
#include "console.h"
#include "exitcode.h"
#include "jsonoutput.h"
#include "settingsstore.h"

#include <QJsonArray>
#include <QJsonObject>

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
    throw UsageError(QStringLiteral("%1 is true or false").arg(key));
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
            throw UsageError(QStringLiteral("monitoredRepos takes full names such as owner/name"));
        names.append(name);
    }
    return names;
}

/// One setting that `settings KEY VALUE` changes.
struct Setter
{
    QString key;
    void (*apply)(SettingsStore &store, const QString &key, const QString &value);
};

const QList<Setter> &setters()
{
    static const QList<Setter> all{
        {QString(SettingsStore::mergeGateModeKey),
         [](SettingsStore &store, const QString &key, const QString &value) {
             if (value == u"warn")
                 store.setMergeGateMode(MergeGateMode::Warn);
             else if (value == u"block")
                 store.setMergeGateMode(MergeGateMode::Block);
             else
                 throw UsageError(QStringLiteral("%1 is warn or block").arg(key));
         }},
        {QString(SettingsStore::deleteBranchAfterMergeKey),
         [](SettingsStore &store, const QString &key, const QString &value) {
             store.setDeleteBranchAfterMerge(parseBool(key, value));
         }},
        {QString(SettingsStore::monitoredReposKey),
         [](SettingsStore &store, const QString &, const QString &value) {
             store.setMonitoredRepos(parseRepositoryList(value));
         }},
        {QString(SettingsStore::notificationsEnabledKey),
         [](SettingsStore &store, const QString &key, const QString &value) {
             store.setNotificationsEnabled(parseBool(key, value));
         }},
    };
    return all;
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

QCoro::Task<int> runLogin(Arguments arguments, Session &)
{
    const QString url = arguments.value(urlOption).value_or(QString()).trimmed();
    if (url.isEmpty())
        throw UsageError(QStringLiteral("login needs --url with the instance URL"));
    // The token never comes from the command line, where other users can read it.
    const std::optional<QString> token = console::readLine(QStringLiteral("Token: "), false);
    if (!token)
        throw UsageError(QStringLiteral("no token on standard input"));
    if (token->isEmpty())
        throw UsageError(QStringLiteral("the token on standard input is empty"));
    SettingsStore *store = SettingsStore::shared();
    store->setInstanceURL(url);
    store->setToken(*token);
    co_return ExitCode::Success;
}

QCoro::Task<int> runLogout(Arguments, Session &)
{
    SettingsStore::shared()->logout();
    co_return ExitCode::Success;
}

QCoro::Task<int> runSettings(Arguments arguments, Session &)
{
    SettingsStore *store = SettingsStore::shared();
    const std::optional<QString> key = arguments.positional(0);
    if (!key) {
        if (arguments.isSet(jsonOption))
            printJson(settingsJson(*store));
        else
            printSettings(*store);
        co_return ExitCode::Success;
    }
    if (arguments.isSet(jsonOption))
        throw UsageError(QStringLiteral("--json is for printing the settings"));
    const std::optional<QString> value = arguments.positional(1);
    if (!value)
        throw UsageError(QStringLiteral("settings %1 needs a value").arg(*key));
    for (const Setter &setter : setters()) {
        if (setter.key == *key) {
            setter.apply(*store, *key, *value);
            co_return ExitCode::Success;
        }
    }
    throw UsageError(QStringLiteral("%1 is not a setting that can be changed here").arg(*key));
}

} // namespace

Command loginCommand()
{
    return {
        QStringLiteral("login"),
        QStringLiteral("Store the instance URL and the access token read from standard input"),
        {{}, {}, {{urlOption, QStringLiteral("URL"), QStringLiteral("the Gitea instance's URL")}}},
        QStringLiteral("The token is the first line of standard input (on a terminal it is asked "
                       "for and not shown);\n"
                       "it is never taken from the command line. Both values go to the "
                       "keychain, as the app's\n"
                       "settings screen saves them; nothing is sent to the server."),
        Command::Needs::Settings,
        runLogin,
    };
}

Command logoutCommand()
{
    return {
        QStringLiteral("logout"),
        QStringLiteral("Remove the stored instance URL and token"),
        {},
        QStringLiteral("Deletes both from the keychain and stores the default instance URL and "
                       "an empty token,\n"
                       "as the app's \"Log out\" does. The other settings stay."),
        Command::Needs::Settings,
        runLogout,
    };
}

Command settingsCommand()
{
    return {
        QStringLiteral("settings"),
        QStringLiteral("Print the settings, or change one"),
        {{},
         {QStringLiteral("KEY"), QStringLiteral("VALUE")},
         {{jsonOption, {}, QStringLiteral("print the settings as a JSON object")}}},
        QStringLiteral("Without arguments prints every setting but the token, one per line as "
                       "KEY<TAB>VALUE.\n"
                       "With KEY and VALUE changes one setting and stores it at once:\n"
                       "  mergeGateMode           warn or block (merging while CI is red)\n"
                       "  deleteBranchAfterMerge  true or false\n"
                       "  notificationsEnabled    true or false (the background check)\n"
                       "  monitoredRepos          full names separated by commas, such as "
                       "ann/tool,cy/infra;\n"
                       "                          empty for every repository\n"
                       "The instance URL and the token are changed with login and logout."),
        Command::Needs::Settings,
        runSettings,
    };
}

} // namespace kestrine::cli
