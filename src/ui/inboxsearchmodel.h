#pragma once

#include "inboxsearch.h"

#include <QList>
#include <QSortFilterProxyModel>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

class InboxRowsModel;

/// The rows of the inbox's list (its source, an InboxRowsModel) that match what is typed into the
/// search field (InboxSearch), in the same order and with the same role. It only hides rows: it
/// never asks for a load, and the rows, their count and the cache behind them stay as they are.
///
/// A change of the search removes and inserts rows rather than resetting the list, so the rows
/// that still match keep their delegates. Each row's folded text is worked out the first time a
/// search looks at it and kept until the source takes new rows, so typing into the field of a
/// large inbox folds each title once, not once per key.
class InboxSearchModel : public QSortFilterProxyModel
{
    Q_OBJECT
    QML_ELEMENT
    /// What the user typed, as typed.
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    /// The rows that match; every row of the source while the search has no words.
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    explicit InboxSearchModel(QObject *parent = nullptr);

    /// An InboxRowsModel; any other model shows no rows while the search has words.
    void setSourceModel(QAbstractItemModel *source) override;

    QString searchText() const { return m_searchText; }
    void setSearchText(const QString &text);
    const InboxSearch &search() const { return m_search; }
    int count() const { return m_count; }

signals:
    void searchTextChanged();
    void countChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    void updateCount();

    InboxRowsModel *m_rows = nullptr;
    QMetaObject::Connection m_resetConnection;
    QString m_searchText;
    InboxSearch m_search;
    // Each source row's InboxSearch::searchableText(), or empty until a search first needs it.
    mutable QList<QString> m_searchable;
    int m_count = 0;
};

} // namespace kestrine::ui
