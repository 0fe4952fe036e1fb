#include "detaillistmodels.h"

#include "changedfilemark.h"
#include "summaries.h"
#include "weblinks.h"

#include <QDateTime>
#include <QQmlEngine>

namespace kestrine {
namespace {

/// A record's optional date as a delegate takes it: an invalid QDateTime when absent.
QVariant dateValue(const std::optional<QDateTime> &date)
{
    return date.value_or(QDateTime());
}

template <class T>
qint64 idOf(const T &record)
{
    return record.id;
}

} // namespace

CommentsModel::CommentsModel(QObject *parent)
    : KeyedListModel(idOf<IssueComment>,
                     {
                         {"author",
                          [](const IssueComment &c) {
                              return authorName(c.user);
                          }},
                         {"body",
                          [](const IssueComment &c) {
                              return c.body.value_or(QString());
                          }},
                         {"createdAt",
                          [](const IssueComment &c) {
                              return dateValue(c.createdAt);
                          }},
                     },
                     parent)
{}

ReviewsModel::ReviewsModel(QObject *parent)
    : KeyedListModel(idOf<PullReview>,
                     {
                         {"author",
                          [](const PullReview &r) {
                              return authorName(r.user);
                          }},
                         {"body",
                          [](const PullReview &r) {
                              return r.body.value_or(QString());
                          }},
                         {"verdict",
                          [](const PullReview &r) {
                              return int(ReviewVerdict::of(r).state);
                          }},
                         {"emoji",
                          [](const PullReview &r) {
                              return ReviewVerdict::of(r).emoji;
                          }},
                         {"verb",
                          [](const PullReview &r) {
                              return ReviewVerdict::of(r).verb;
                          }},
                         {"line",
                          [](const PullReview &r) {
                              return ReviewVerdict::of(r).line(
                                  isolateDirection(authorName(r.user)));
                          }},
                     },
                     parent)
{}

ChangedFilesModel::ChangedFilesModel(QObject *parent)
    : KeyedListModel([](const ChangedFile &f) { return f.filename; },
                     {
                         {"filename",
                          [](const ChangedFile &f) {
                              return f.filename;
                          }},
                         {"mark",
                          [](const ChangedFile &f) {
                              return changedFileMark(f.status);
                          }},
                         {"additions",
                          [](const ChangedFile &f) {
                              return f.additions;
                          }},
                         {"deletions",
                          [](const ChangedFile &f) {
                              return f.deletions;
                          }},
                     },
                     parent)
{}

JobsModel::JobsModel(QObject *parent)
    : KeyedListModel(idOf<ActionJob>,
                     {
                         {"jobID",
                          [](const ActionJob &j) {
                              return j.id;
                          }},
                         {"name",
                          [](const ActionJob &j) {
                              return j.name;
                          }},
                         {"ciStatus",
                          [](const ActionJob &j) {
                              return int(CIStatus::forJob(j));
                          }},
                         {"failed",
                          [](const ActionJob &j) {
                              return CIStatus::jobFailed(j);
                          }},
                         {"hasRun",
                          [](const ActionJob &j) {
                              return CIStatus::jobHasRun(j);
                          }},
                     },
                     parent)
{}

RunsModel::RunsModel(QObject *parent)
    : KeyedListModel(
          idOf<ActionRun>,
          {
              {"runID",
               [](const ActionRun &r) {
                   return r.id;
               }},
              {"name",
               [](const ActionRun &r) {
                   return runDisplayName(r);
               }},
              {"ciStatus",
               [](const ActionRun &r) {
                   return int(CIStatus::forRun(r));
               }},
              {"createdAt",
               [](const ActionRun &r) {
                   return dateValue(r.createdAt);
               }},
              // A row asks for its run's jobs before they have arrived: the model is made then.
              {"jobs",
               [this](const ActionRun &r) {
                   return QVariant::fromValue<QObject *>(jobsOf(r.id));
               }},
          },
          parent)
{}

CommitStatusesModel::CommitStatusesModel(QObject *parent)
    : KeyedListModel(idOf<CommitStatus>,
                     {
                         {"context",
                          [](const CommitStatus &s) {
                              return s.context.value_or(QString());
                          }},
                         {"description",
                          [](const CommitStatus &s) {
                              return s.description.value_or(QString());
                          }},
                         {"ciStatus",
                          [](const CommitStatus &s) {
                              return int(CIStatus::forStatus(s));
                          }},
                         {"state",
                          [](const CommitStatus &s) {
                              return s.status.value_or(QString()).toLower();
                          }},
                         {"detailsUrl",
                          [](const CommitStatus &s) {
                              return webPage(s.targetUrl) ? *s.targetUrl : QString();
                          }},
                     },
                     parent)
{}

JobsModel *RunsModel::jobsOf(qint64 runID)
{
    JobsModel *&jobs = m_jobs[runID];
    if (!jobs) {
        jobs = new JobsModel(this);
        // QML reads it through a role; this model, not the engine, decides when it goes.
        QQmlEngine::setObjectOwnership(jobs, QQmlEngine::CppOwnership);
    }
    return jobs;
}

} // namespace kestrine
