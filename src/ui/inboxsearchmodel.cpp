#include "inboxsearchmodel.h"

#include "inboxrowsmodel.h"

namespace kestrine::ui {

InboxSearchModel::InboxSearchModel(QObject *parent)
    : QSortFilterProxyModel(parent)
{
    connect(this, &QAbstractItemModel::rowsInserted, this, &InboxSearchModel::updateCount);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &InboxSearchModel::updateCount);
    connect(this, &QAbstractItemModel::modelReset, this, &InboxSearchModel::updateCount);
    connect(this, &QAbstractItemModel::layoutChanged, this, &InboxSearchModel::updateCount);
}

void InboxSearchModel::setSourceModel(QAbstractItemModel *source)
{
    disconnect(m_resetConnection);
    m_searchable.clear();
    m_rows = qobject_cast<InboxRowsModel *>(source);
    // Before the reset, while the rows are changing: the texts kept are of the rows going away.
    if (m_rows) {
        m_resetConnection = connect(m_rows, &QAbstractItemModel::modelAboutToBeReset, this,
                                    [this] { m_searchable.clear(); });
    }
    QSortFilterProxyModel::setSourceModel(source);
    updateCount();
}

void InboxSearchModel::setSearchText(const QString &text)
{
    if (m_searchText == text)
        return;
    m_searchText = text;
    InboxSearch search(text);
    // A space typed after a word, or a change of case, finds the same rows: nothing to redo.
    const bool changed = search != m_search;
    m_search = std::move(search);
    if (changed)
        invalidateFilter();
    // Told once the rows are filtered, so that whoever is told sees the rows that match.
    emit searchTextChanged();
}

bool InboxSearchModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (m_search.isEmpty())
        return true;
    if (!m_rows || sourceParent.isValid())
        return false;
    const QList<PRRow> &rows = m_rows->rows();
    if (sourceRow < 0 || sourceRow >= rows.size())
        return false;
    if (m_searchable.size() != rows.size())
        m_searchable = QList<QString>(rows.size());
    QString &searchable = m_searchable[sourceRow];
    if (searchable.isEmpty())
        searchable = InboxSearch::searchableText(rows.at(sourceRow));
    return m_search.matchesSearchable(searchable);
}

void InboxSearchModel::updateCount()
{
    const int count = rowCount();
    if (count == m_count)
        return;
    m_count = count;
    emit countChanged();
}

} // namespace kestrine::ui
