#include "mergegate.h"

namespace kestrine {

MergeGateDecision mergeGate(CIStatus::Value ciStatus, MergeGateMode mode)
{
    if (ciStatus != CIStatus::Failure)
        return {};
    switch (mode) {
    case MergeGateMode::Warn:
        return {true, QStringLiteral("CI is red \u2014 you can still merge (Settings allows it)."),
                QStringLiteral("exclamationmark.triangle"), MergeGateDecision::Warning};
    case MergeGateMode::Block:
        return {false, QStringLiteral("Merging is blocked while CI is red (Settings)."),
                QStringLiteral("lock"), MergeGateDecision::Secondary};
    }
    return {};
}

const QList<MergeMethod> &mergeMethods()
{
    static const QList<MergeMethod> methods{
        {QStringLiteral("merge"), QStringLiteral("Create merge commit")},
        {QStringLiteral("rebase"), QStringLiteral("Rebase and merge")},
        {QStringLiteral("squash"), QStringLiteral("Squash and merge")},
    };
    return methods;
}

QString defaultMergeMethod()
{
    return mergeMethods().first().value;
}

} // namespace kestrine
