#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// Keeps a server's text from turning the words around it, for QML: isolateDirection (summaries.h)
/// as a singleton.
class Bidi : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit Bidi(QObject *parent = nullptr);

    /// `text` set apart as a directional isolate when it holds directional formatting.
    Q_INVOKABLE static QString isolate(const QString &text);
};

} // namespace kestrine::ui
