#include "inboxrowsmodel.h"

namespace kestrine::ui {

InboxRowsModel::InboxRowsModel(QObject *parent)
    : QAbstractListModel(parent)
{
    // A timer object, not a queued call (nor QTimer::singleShot(0), which makes one): a queued
    // call runs in the same pass as the events posted before it, while a timer lets input and
    // drawing that wait go first.
    m_takeTimer.setSingleShot(true);
    m_takeTimer.setInterval(0);
    connect(&m_takeTimer, &QTimer::timeout, this, &InboxRowsModel::takeRows);
}

void InboxRowsModel::setViewModel(InboxViewModel *viewModel)
{
    if (m_viewModel == viewModel)
        return;
    disconnect(m_rowsConnection);
    disconnect(m_loadingConnection);
    m_viewModel = viewModel;
    if (viewModel) {
        m_rowsConnection = connect(viewModel, &InboxViewModel::displayedRowsChanged, this,
                                   &InboxRowsModel::scheduleTakeRows);
        m_loadingConnection = connect(viewModel, &InboxViewModel::isLoadingChanged, this, [this] {
            if (m_takeTimer.isActive() && !m_viewModel->isLoading())
                takeRows();
        });
    }
    takeRows();
    emit viewModelChanged();
}

void InboxRowsModel::scheduleTakeRows()
{
    if (!m_takeTimer.isActive())
        m_takeTimer.start();
}

void InboxRowsModel::takeRows()
{
    m_takeTimer.stop();
    const int before = count();
    beginResetModel();
    // A copy of an implicitly shared list: no row is copied.
    m_rows = m_viewModel ? m_viewModel->displayedRows() : QList<PRRow>();
    endResetModel();
    if (count() != before)
        emit countChanged();
}

int InboxRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant InboxRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid) ||
        role != RowRole)
        return {};
    return toQmlValue(m_rows.at(index.row()));
}

QHash<int, QByteArray> InboxRowsModel::roleNames() const
{
    return {{RowRole, "row"}};
}

} // namespace kestrine::ui
