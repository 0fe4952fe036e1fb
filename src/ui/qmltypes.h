#pragma once

// How the screens see the layers below them. Those layers know nothing of the QML module: each
// type they publish to QML is declared here, on top, as a foreign type of the "Kestrine" module,
// so that the dependency direction stays one way (ui -> detail/inbox -> settings -> api) and every
// name QML can use is listed in one place.

#include "diffmodel.h"
#include "diffparser.h"
#include "inboxviewmodel.h"
#include "joblogmodel.h"
#include "logstore.h"
#include "markdownlines.h"
#include "mergegate.h"
#include "prdetailviewmodel.h"
#include "settingsstore.h"
#include "summaries.h"

#include <QtQml/qqml.h>
#include <QtQml/qqmlregistration.h>

QT_BEGIN_NAMESPACE
class QQmlEngine;
class QJSEngine;
QT_END_NAMESPACE

namespace kestrine::ui {

/// The settings: QML gets the store the program installed on its engine, never a new one.
struct SettingsStoreForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::SettingsStore)
    QML_NAMED_ELEMENT(SettingsStore)
    QML_SINGLETON

public:
    static SettingsStore *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine)
    {
        return SettingsStore::create(qmlEngine, jsEngine);
    }
};

/// The diagnostic log the program installed on the engine.
struct LogStoreForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::LogStore)
    QML_NAMED_ELEMENT(LogStore)
    QML_SINGLETON

public:
    static LogStore *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine)
    {
        return LogStore::create(qmlEngine, jsEngine);
    }
};

struct LogEntryForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::LogEntry)
    QML_VALUE_TYPE(logEntry)
};

struct InboxViewModelForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::InboxViewModel)
    QML_NAMED_ELEMENT(InboxViewModel)
};

struct PRDetailViewModelForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::PRDetailViewModel)
    QML_NAMED_ELEMENT(PRDetailViewModel)
};

/// The detail screen's lists (comments, reviews, changed files, runs, jobs), read through roles.
struct RecordListModelForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::RecordListModel)
    QML_ANONYMOUS
};

struct DiffModelForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::DiffModel)
    QML_NAMED_ELEMENT(DiffModel)
};

struct JobLogModelForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::JobLogModel)
    QML_NAMED_ELEMENT(JobLogModel)
};

struct MarkdownLinesModelForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::MarkdownLinesModel)
    QML_NAMED_ELEMENT(MarkdownLinesModel)
};

struct MarkdownLineForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::MarkdownLine)
    QML_VALUE_TYPE(markdownLine)
};

struct MergeGateDecisionForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::MergeGateDecision)
    QML_VALUE_TYPE(mergeGateDecision)
};

struct MergeMethodForeign
{
    Q_GADGET
    QML_FOREIGN(kestrine::MergeMethod)
    QML_VALUE_TYPE(mergeMethod)
};

// Enumerations only: CIStatus.Failure, ReviewState.Approved, DiffLineType.Addition,
// MarkdownLine.Heading (through the namespace below), MergeGateDecision.Warning.
namespace CIStatusForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(kestrine::CIStatus)
QML_NAMED_ELEMENT(CIStatus)
} // namespace CIStatusForeign

namespace ReviewStateForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(kestrine::ReviewState)
QML_NAMED_ELEMENT(ReviewState)
} // namespace ReviewStateForeign

namespace DiffLineTypeForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(kestrine::DiffLineType)
QML_NAMED_ELEMENT(DiffLineType)
} // namespace DiffLineTypeForeign

namespace MarkdownKindForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(kestrine::MarkdownLine)
QML_NAMED_ELEMENT(MarkdownLine)
} // namespace MarkdownKindForeign

namespace MergeGateNoteForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(kestrine::MergeGateDecision)
QML_NAMED_ELEMENT(MergeGate)
} // namespace MergeGateNoteForeign

} // namespace kestrine::ui
