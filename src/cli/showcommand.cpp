// show: one load of the detail model, printed tab by tab as the detail screen shows it.

#include "changedfilemark.h"
#include "command.h"
#include "console.h"
#include "dates.h"
#include "detailsupport.h"
#include "exitcode.h"
#include "jsonoutput.h"
#include "listcut.h"
#include "prdetailviewmodel.h"
#include "session.h"
#include "summaries.h"
#include "weblinks.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>

namespace kestrine::cli {
namespace {

const QString jsonOption = QStringLiteral("--json");
const QString indent = QStringLiteral("  ");

/// Every line of `text`, indented.
QString indented(const QString &text, const QString &by)
{
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        line.prepend(by);
    return lines.join(u'\n');
}

/// The pull request's state in the user's language; a state this program does not know, as the
/// server wrote it.
QString stateWord(const PullRequest &pr)
{
    if (pr.merged.value_or(false))
        return QCoreApplication::translate("CliShow", "merged", "pull request state");
    if (pr.state == u"open")
        return QCoreApplication::translate("CliShow", "open", "pull request state");
    if (pr.state == u"closed")
        return QCoreApplication::translate("CliShow", "closed", "pull request state");
    return pr.state;
}

/// A CI summary in the user's language (in English, its stored name: "success").
QString ciWord(CIStatus::Value status)
{
    switch (status) {
    case CIStatus::Running:
        return QCoreApplication::translate("CliShow", "running", "CI state");
    case CIStatus::Success:
        return QCoreApplication::translate("CliShow", "success", "CI state");
    case CIStatus::Failure:
        return QCoreApplication::translate("CliShow", "failure", "CI state");
    case CIStatus::Cancelled:
        return QCoreApplication::translate("CliShow", "cancelled", "CI state");
    case CIStatus::Unknown:
        break;
    }
    return QCoreApplication::translate("CliShow", "unknown", "CI state");
}

QString header(const PRDetailViewModel &model, const PullRequestTarget &target)
{
    const PullRequest &pr = *model.pr();
    QStringList facts{
        target.key(), stateWord(pr),
        QCoreApplication::translate("CliShow", "CI %1").arg(ciWord(model.ciStatus()))};
    if (const QString badge = ReviewState::badgeText(model.reviewState()); !badge.isEmpty())
        facts.append(badge);
    if (pr.draft.value_or(false))
        facts.append(QCoreApplication::translate("CliShow", "Draft", "a draft pull request"));
    QString text = pr.title + u'\n' + facts.join(QStringLiteral(" · "));
    // Where the rest of the team sees it, when the server gave a web address for it.
    if (const std::optional<QUrl> url = model.webUrl())
        text += u'\n' + url->toString(QUrl::FullyEncoded);
    return text;
}

QString description(const PullRequest &pr)
{
    return pr.body && !pr.body->isEmpty()
               ? *pr.body
               : QCoreApplication::translate("CliShow", "No description.");
}

/// The notice under a list the page bound cut short, indented as the list's items; none for a
/// complete list.
void appendCutNotice(QStringList &lines, const std::optional<ListCut> &cut, const QString &prefix)
{
    if (cut)
        lines.append(prefix + u'(' + listCutNotice(*cut) + u')');
}

QString conversation(const PRDetailViewModel &model)
{
    QStringList lines;
    if (!model.reviews().isEmpty()) {
        lines.append(QCoreApplication::translate("CliShow", "Reviews", "heading"));
        for (const PullReview &review : model.reviews()) {
            lines.append(indent + ReviewVerdict::of(review).line(authorName(review.user)));
            if (review.body && !review.body->isEmpty())
                lines.append(indented(*review.body, indent + indent));
        }
        appendCutNotice(lines, model.reviewsCut(), indent);
    }
    lines.append(QCoreApplication::translate("CliShow", "Comments", "heading"));
    if (model.comments().isEmpty())
        lines.append(indent + QCoreApplication::translate("CliShow", "No comments yet."));
    for (const IssueComment &comment : model.comments()) {
        QString line = indent + authorName(comment.user);
        if (comment.createdAt)
            line += u' ' + InternetDate::format(*comment.createdAt);
        lines.append(line);
        if (comment.body)
            lines.append(indented(*comment.body, indent + indent));
    }
    return lines.join(u'\n');
}

QString files(const PRDetailViewModel &model)
{
    QStringList lines{QCoreApplication::translate("CliShow", "Files", "heading")};
    if (model.files().isEmpty())
        lines.append(indent + QCoreApplication::translate("CliShow", "No changed files."));
    for (const ChangedFile &file : model.files()) {
        lines.append(QStringLiteral("%1%2 %3  +%4 −%5")
                         .arg(indent, changedFileMark(file.status), file.filename)
                         .arg(file.additions)
                         .arg(file.deletions));
    }
    appendCutNotice(lines, model.filesCut(), indent);
    return lines.join(u'\n');
}

QString checks(const PRDetailViewModel &model)
{
    QStringList lines{QCoreApplication::translate("CliShow", "Checks", "heading")};
    if (model.runs().isEmpty())
        lines.append(indent + QCoreApplication::translate(
                                  "CliShow", "No workflow runs for this head commit."));
    for (const ActionRun &run : model.runs()) {
        lines.append(QStringLiteral("%1%2  %3  %4")
                         .arg(indent, ciWord(CIStatus::forRun(run)), runDisplayName(run),
                              QCoreApplication::translate("CliShow", "(run %1)").arg(run.id)));
        for (const ActionJob &job : model.jobs().value(run.id)) {
            lines.append(QStringLiteral("%1%2  %3  %4")
                             .arg(indent + indent, ciWord(CIStatus::forJob(job)), job.name,
                                  QCoreApplication::translate("CliShow", "(job %1)").arg(job.id)));
        }
        appendCutNotice(lines, model.jobsCut(run.id), indent + indent);
    }
    // Other CI than Actions, as the Checks tab shows it below the runs.
    if (!model.statuses().isEmpty())
        lines.append(indent + QCoreApplication::translate("CliShow", "Commit statuses"));
    // A status's state is the server's word, shown as it was sent.
    for (const CommitStatus &status : model.statuses()) {
        QStringList parts{status.status.value_or(QStringLiteral("unknown")).toLower(),
                          status.context.value_or(QString())};
        if (!status.description.value_or(QString()).isEmpty())
            parts.append(*status.description);
        if (webPage(status.targetUrl))
            parts.append(*status.targetUrl);
        lines.append(indent + indent + parts.join(QStringLiteral("  ")));
    }
    return lines.join(u'\n');
}

/// {"shown": N, "total": M} for a list the page bound cut short; "total" only when the server
/// gave one.
QJsonObject cutEntry(const ListCut &cut)
{
    QJsonObject entry{{QStringLiteral("shown"), qint64(cut.shown)}};
    if (cut.total)
        entry.insert(QStringLiteral("total"), *cut.total);
    return entry;
}

/// The lists the page bound cut short, by name, a run's jobs under "jobs" by run id: empty when
/// every list is whole.
QJsonObject cutLists(const PRDetailViewModel &model)
{
    QJsonObject cuts;
    const std::pair<QString, std::optional<ListCut>> lists[] = {
        {QStringLiteral("reviews"), model.reviewsCut()},
        {QStringLiteral("files"), model.filesCut()},
        {QStringLiteral("commits"), model.commitsCut()},
    };
    for (const auto &[name, cut] : lists) {
        if (cut)
            cuts.insert(name, cutEntry(*cut));
    }
    QJsonObject jobs;
    for (const ActionRun &run : model.runs()) {
        if (const std::optional<ListCut> cut = model.jobsCut(run.id))
            jobs.insert(QString::number(run.id), cutEntry(*cut));
    }
    if (!jobs.isEmpty())
        cuts.insert(QStringLiteral("jobs"), jobs);
    return cuts;
}

QJsonObject report(const PRDetailViewModel &model)
{
    QJsonObject jobs;
    for (auto it = model.jobs().cbegin(); it != model.jobs().cend(); ++it)
        jobs.insert(QString::number(it.key()),
                    encodeJson(it.value(), DateEncoding::InternetDateTime));
    const auto json = [](const auto &records) {
        return encodeJson(records, DateEncoding::InternetDateTime);
    };
    return {
        {QStringLiteral("pr"), json(*model.pr())},
        {QStringLiteral("ciStatus"), CIStatus::name(model.ciStatus())},
        {QStringLiteral("reviews"), json(model.reviews())},
        {QStringLiteral("comments"), json(model.comments())},
        {QStringLiteral("files"), json(model.files())},
        {QStringLiteral("commits"), json(model.commits())},
        {QStringLiteral("runs"), json(model.runs())},
        {QStringLiteral("statuses"), json(model.statuses())},
        {QStringLiteral("jobs"), jobs},
        {QStringLiteral("cut"), cutLists(model)},
    };
}

QCoro::Task<int> runShow(Arguments arguments, Session &session)
{
    const PullRequestTarget target = targetArgument(arguments);
    const bool asJson = arguments.isSet(jsonOption);
    co_return co_await withPullRequest(
        session, target, [&](PRDetailViewModel &model) -> QCoro::Task<int> {
            if (asJson)
                printJson(report(model));
            else
                console::printLine(QStringList{header(model, target), description(*model.pr()),
                                               conversation(model), files(model), checks(model)}
                                       .join(QStringLiteral("\n\n")));
            co_return ExitCode::Success;
        });
}

} // namespace

Command showCommand()
{
    return {
        QStringLiteral("show"),
        QCoreApplication::translate("CliShow",
                                    "Print a pull request with its conversation, files and checks"),
        {{QCoreApplication::translate("CliPlaceholder", "OWNER/REPO"),
          QCoreApplication::translate("CliPlaceholder", "NUMBER")},
         {},
         {{jsonOption,
           {},
           QCoreApplication::translate("CliShow", "print {pr, ciStatus, reviews, comments, files, "
                                                  "commits, runs, jobs, cut} as JSON")}}},
        QCoreApplication::translate(
            "CliShow", "Loads the pull request as its detail screen does and prints, one block "
                       "each:\n"
                       "  the title, OWNER/REPO#NUMBER · state · CI summary · review summary, "
                       "and the\n"
                       "  address of its page on the server (when that is an http or https "
                       "address);\n"
                       "  the description;\n"
                       "  the reviews and the comments;\n"
                       "  the changed files with their added and removed line counts;\n"
                       "  the workflow runs of the head commit and their jobs, with the ids that "
                       "rerun and\n"
                       "  job-log take.\n"
                       "Every page of each list is fetched, up to 100 pages; a list cut short "
                       "there says so."),
        runShow,
    };
}

} // namespace kestrine::cli
