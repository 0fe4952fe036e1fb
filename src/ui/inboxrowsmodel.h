#pragma once

#include "inboxviewmodel.h"

#include <QAbstractListModel>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The inbox's displayed rows as a list model, for the inbox screen's list. The view model's
/// `displayedRows` property turns every row into a JavaScript object each time it is read, which
/// for an inbox of thousands of pull requests takes longer than many frames; here a row takes its
/// QML form ({repo, pr}, as displayedRows gives it) only when the list asks for it, that is for
/// the rows it shows. Each new list of rows replaces the previous one in one model reset, so the
/// list goes back to its top as it did when it was handed a new array. Role: "row".
///
/// The reset waits for a zero-interval timer: the load that publishes the rows has just sorted
/// thousands of them, and the list builds the rows it shows on the reset, so done at once the two
/// would hold up input and drawing together. It waits no longer than the load, though: when the
/// load ends first, the list takes the rows then.
class InboxRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kestrine::InboxViewModel *viewModel READ viewModel WRITE setViewModel NOTIFY
                   viewModelChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        RowRole = Qt::UserRole + 1,
    };

    explicit InboxRowsModel(QObject *parent = nullptr);

    InboxViewModel *viewModel() const { return m_viewModel; }
    void setViewModel(InboxViewModel *viewModel);
    int count() const { return int(m_rows.size()); }
    /// The rows the list has now, which may still be the previous load's for a moment.
    const QList<PRRow> &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void viewModelChanged();
    void countChanged();

private:
    void scheduleTakeRows();
    void takeRows();

    QPointer<InboxViewModel> m_viewModel;
    QMetaObject::Connection m_rowsConnection;
    QMetaObject::Connection m_loadingConnection;
    QList<PRRow> m_rows;
    QTimer m_takeTimer;
};

} // namespace kestrine::ui
