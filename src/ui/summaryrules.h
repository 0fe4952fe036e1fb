#pragma once

#include <QObject>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The summary rules the detail screen applies to single records, for QML: records come in the
/// QML form the view models give (JavaScript objects with the JSON keys). A value that is not such
/// a record counts as unknown, not failed and not run.
class SummaryRules : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit SummaryRules(QObject *parent = nullptr);

    /// CIStatus of one run: "in_progress", "running", "queued" or "waiting" run; else its
    /// conclusion.
    Q_INVOKABLE int runStatus(const QVariant &run) const;
    /// CIStatus of one job: only "in_progress", "running" and "queued" run ("waiting" goes by its
    /// conclusion).
    Q_INVOKABLE int jobStatus(const QVariant &job) const;
    /// The job concluded "failure" or "cancelled" (any case): it can be re-run.
    Q_INVOKABLE bool jobFailed(const QVariant &job) const;
    /// The job is past "queued", "in_progress", "running", "waiting" and "requested" and has a
    /// conclusion: it has a log to show.
    Q_INVOKABLE bool jobHasRun(const QVariant &job) const;
    /// The mark before a changed file's name, for its status (a text, or undefined when absent).
    Q_INVOKABLE QString fileMark(const QVariant &status) const;
    /// ReviewState of a list holding just this review.
    Q_INVOKABLE int reviewState(const QVariant &review) const;
};

} // namespace kestrine::ui
