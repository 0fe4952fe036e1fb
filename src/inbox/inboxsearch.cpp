#include "inboxsearch.h"

#include <algorithm>

namespace kestrine {

QString foldForSearch(QStringView text)
{
    // Decomposed, an accented letter is its base letter followed by the accent as a mark of its
    // own, which is then left out. The case is folded after that: a capital such as "İ" has no
    // lower case of its own, but its base letter has.
    QString folded = text.toString().normalized(QString::NormalizationForm_D);
    folded.removeIf([](QChar c) {
        const QChar::Category category = c.category();
        return category == QChar::Mark_NonSpacing || category == QChar::Other_Format;
    });
    return folded.toCaseFolded();
}

InboxSearch::InboxSearch(QStringView query)
{
    qsizetype start = 0;
    for (qsizetype i = 0; i <= query.size(); ++i) {
        if (i < query.size() && !query.at(i).isSpace())
            continue;
        // A word that was nothing but marks or format characters leaves nothing to look for.
        if (const QString word = foldForSearch(query.sliced(start, i - start)); !word.isEmpty())
            m_words.append(word);
        start = i + 1;
    }
}

bool InboxSearch::matchesSearchable(QStringView searchable) const
{
    return std::all_of(m_words.cbegin(), m_words.cend(),
                       [searchable](const QString &word) { return searchable.contains(word); });
}

QString InboxSearch::searchableText(const PRRow &row)
{
    return foldForSearch(row.pr.title) + u'\n' + foldForSearch(row.repo.fullName) + u'\n' + u'#' +
           QString::number(row.pr.number);
}

} // namespace kestrine
