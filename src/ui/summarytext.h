#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The words of the summaries (summaries.h) for QML, which cannot call the summaries' own static
/// functions: the screens show the same words as kestrine-cli prints.
class SummaryText : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit SummaryText(QObject *parent = nullptr);

    /// ReviewState::badgeText of a ReviewState value; "" for anything that is not one.
    Q_INVOKABLE static QString reviewBadge(int state);
};

} // namespace kestrine::ui
