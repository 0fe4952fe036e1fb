#include "mergegate.h"

#include <QCoreApplication>

namespace kestrine {

MergeGateDecision mergeGate(CIStatus::Value ciStatus, MergeGateMode mode)
{
    if (ciStatus != CIStatus::Failure)
        return {};
    switch (mode) {
    case MergeGateMode::Warn:
        return {true,
                QCoreApplication::translate(
                    "MergeGate", "CI is red — you can still merge (Settings allows it)."),
                QStringLiteral("exclamationmark.triangle"), MergeGateDecision::Warning};
    case MergeGateMode::Block:
        return {false,
                QCoreApplication::translate("MergeGate",
                                            "Merging is blocked while CI is red (Settings)."),
                QStringLiteral("lock"), MergeGateDecision::Secondary};
    }
    return {};
}

QList<MergeMethod> mergeMethods()
{
    return {
        {QStringLiteral("merge"), QCoreApplication::translate("MergeGate", "Create merge commit")},
        {QStringLiteral("rebase"), QCoreApplication::translate("MergeGate", "Rebase and merge")},
        {QStringLiteral("squash"), QCoreApplication::translate("MergeGate", "Squash and merge")},
    };
}

QString defaultMergeMethod()
{
    return mergeMethods().first().value;
}

} // namespace kestrine
