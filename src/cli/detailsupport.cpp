#include "detailsupport.h"

#include "console.h"
#include "exitcode.h"
#include "inboxviewmodel.h"
#include "prdetailviewmodel.h"
#include "session.h"
#include "settingsstore.h"

#include <QCoreApplication>

namespace kestrine::cli {

Repository repositoryArgument(const QString &text)
{
    const QStringList parts = text.split(u'/');
    if (parts.size() != 2 || parts[0].isEmpty() || parts[1].isEmpty())
        throw UsageError(
            QCoreApplication::translate("CliDetail", "%1 is a full name such as owner/name")
                .arg(QCoreApplication::translate("CliPlaceholder", "OWNER/REPO")));
    return repositoryNamed(parts[0], parts[1]);
}

qint64 idArgument(const QString &text, const QString &what)
{
    bool isNumber = false;
    const qint64 id = text.toLongLong(&isNumber);
    if (!isNumber || id <= 0 || text.startsWith(u'+'))
        throw UsageError(
            QCoreApplication::translate("CliDetail", "%1 is a positive whole number").arg(what));
    return id;
}

PullRequestTarget targetArgument(const Arguments &arguments)
{
    return {repositoryArgument(arguments.positional(0).value_or(QString())),
            idArgument(arguments.positional(1).value_or(QString()),
                       QCoreApplication::translate("CliPlaceholder", "NUMBER"))};
}

QString textArgument(const QString &argument)
{
    const QString text = (argument == u"-" ? console::readAll() : argument).trimmed();
    if (text.isEmpty())
        throw UsageError(QCoreApplication::translate("CliDetail", "the text is empty"));
    return text;
}

bool ensureConfigured(Session &session)
{
    return ensureConfigured(session, InboxViewModel::notConfiguredText());
}

bool ensureConfigured(Session &session, const QString &message)
{
    const SettingsStore &settings = session.settings();
    if (settings.isConfigured() && settings.client())
        return true;
    console::printError(message);
    return false;
}

QCoro::Task<int> withPullRequest(Session &session, const PullRequestTarget &target,
                                 std::function<QCoro::Task<int>(PRDetailViewModel &)> act)
{
    if (!ensureConfigured(session))
        co_return ExitCode::Failure;
    PRDetailViewModel model(session.settings(), target.repo, target.number);
    const ProgressEcho progress(model);
    co_await model.loadWithStatuses();
    if (!model.hasPr()) {
        // Without a pull request the screen shows "Couldn't load PR" over the model's error.
        console::printError(model.errorMessage().value_or(
            QCoreApplication::translate("CliDetail", "Couldn't load PR")));
        co_return ExitCode::Failure;
    }
    co_return co_await act(model);
}

ProgressEcho::ProgressEcho(PRDetailViewModel &model)
{
    if (!console::errorIsTerminal())
        return;
    connect(&model, &PRDetailViewModel::busyMessageChanged, this, [&model] {
        if (model.busyMessage())
            console::printError(*model.busyMessage());
    });
}

} // namespace kestrine::cli
