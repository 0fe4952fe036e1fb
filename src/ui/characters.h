#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// Counts characters as a person sees them: user-perceived characters, the extended grapheme
/// clusters of Unicode text segmentation. A thumbs-up with a skin tone, "e" with a combining acute
/// accent, a flag made of two regional indicators, a family joined by zero-width joiners and a
/// "\r\n" line break are each one character; blanks and line breaks count like any other.
/// (JavaScript's length counts UTF-16 units and Array.from(text) code points, which both read
/// such characters as several.)
class Characters : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit Characters(QObject *parent = nullptr);

    Q_INVOKABLE int count(const QString &text) const;
};

} // namespace kestrine::ui
