#pragma once

#include "settingsstore.h"
#include "summaries.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine {

/// What the merge controls do for one CI status under one gate mode: whether merging is allowed,
/// and the note the merge sheet shows (none while CI is not red).
struct MergeGateDecision
{
    Q_GADGET
    QML_VALUE_TYPE(mergeGateDecision)
    Q_PROPERTY(bool allowed MEMBER allowed)
    Q_PROPERTY(bool hasNote READ hasNote)
    Q_PROPERTY(QString noteText MEMBER noteText)
    Q_PROPERTY(QString noteIcon MEMBER noteIcon)
    Q_PROPERTY(kestrine::MergeGateDecision::NoteTone noteTone MEMBER noteTone)

public:
    /// The colour role of the note: orange for a warning, the secondary text colour otherwise.
    enum NoteTone {
        Warning,
        Secondary,
    };
    Q_ENUM(NoteTone)

    bool allowed = true;
    /// Empty when there is no note.
    QString noteText;
    /// A system symbol name, e.g. "lock"; empty when there is no note.
    QString noteIcon;
    NoteTone noteTone = Secondary;

    bool hasNote() const { return !noteText.isEmpty(); }
    bool operator==(const MergeGateDecision &) const = default;
};

/// The merge gate, shared by the detail screen's merge button and the merge sheet. Only a
/// failure is "CI is red": running, cancelled or unknown CI never holds a merge back. It is a
/// screen rule: the merge action itself never refuses on CI grounds.
MergeGateDecision mergeGate(CIStatus::Value ciStatus, MergeGateMode mode);

/// One way to merge: Gitea's "Do" value and the label the merge sheet shows.
struct MergeMethod
{
    Q_GADGET
    QML_VALUE_TYPE(mergeMethod)
    Q_PROPERTY(QString value MEMBER value)
    Q_PROPERTY(QString label MEMBER label)

public:
    QString value;
    QString label;

    bool operator==(const MergeMethod &) const = default;
};

/// The merge methods in the order the merge sheet lists them, their labels in the user's language.
QList<MergeMethod> mergeMethods();
/// The method the merge sheet selects first: "merge".
QString defaultMergeMethod();

} // namespace kestrine
