#include "summarytext.h"

#include "summaries.h"

#include <QMetaEnum>

namespace kestrine::ui {

SummaryText::SummaryText(QObject *parent)
    : QObject(parent)
{}

QString SummaryText::reviewBadge(int state)
{
    if (!QMetaEnum::fromType<ReviewState::Value>().valueToKey(state))
        return {};
    return ReviewState::badgeText(ReviewState::Value(state));
}

} // namespace kestrine::ui
