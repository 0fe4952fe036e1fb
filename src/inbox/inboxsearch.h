#pragma once

#include "prrow.h"

#include <QString>
#include <QStringList>
#include <QStringView>

namespace kestrine {

/// `text` as the inbox search compares it: case folded, with its accents and other non-spacing
/// marks taken off the letters they sit on ("Café" reads "cafe") and without invisible format
/// characters (a zero-width space or a direction mark inside a word does not split it).
QString foldForSearch(QStringView text);

/// What the user typed into the inbox's search field. A row matches when every word of it (words
/// stand apart by white space) is found, folded, in the row's title, in its repository's full name
/// or in "#" and its number: "42" and "#4" both find #42. A query of no words matches every row.
class InboxSearch
{
public:
    InboxSearch() = default;
    explicit InboxSearch(QStringView query);

    /// No words: every row matches.
    bool isEmpty() const { return m_words.isEmpty(); }
    /// The query's words, folded, in the order typed.
    const QStringList &words() const { return m_words; }

    bool matches(const PRRow &row) const { return matchesSearchable(searchableText(row)); }
    /// Whether every word is in `searchable`, a row's searchableText().
    bool matchesSearchable(QStringView searchable) const;

    /// The row's title, repository full name and "#number", folded, one per line. A word holds no
    /// white space, so it is found only within one of them. Worth keeping for a row that is
    /// searched again and again.
    static QString searchableText(const PRRow &row);

    bool operator==(const InboxSearch &) const = default;

private:
    QStringList m_words;
};

} // namespace kestrine
