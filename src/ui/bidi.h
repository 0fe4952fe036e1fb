#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// Keeps a server's text from turning the words around it. A line such as "🔴 <login> requested
/// changes" puts a stranger's text between the app's own words; a right-to-left override left open
/// in it (U+202E) would draw the rest of the line backwards. Such a text is set apart as a
/// directional isolate, which ends whatever the text opened; any other text stays as it is.
class Bidi : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit Bidi(QObject *parent = nullptr);

    /// `text` between U+2068 FIRST STRONG ISOLATE and U+2069 POP DIRECTIONAL ISOLATE when it holds
    /// directional formatting, with the ends of isolates it never opened left out and those it
    /// leaves open ended; `text` itself otherwise.
    Q_INVOKABLE static QString isolate(const QString &text);
};

} // namespace kestrine::ui
