#include "recordlistmodel.h"

namespace kestrine {

RecordListModel::RecordListModel(const QList<QByteArray> &roleNames, QObject *parent)
    : QAbstractListModel(parent)
{
    for (qsizetype i = 0; i < roleNames.size(); ++i)
        m_roleNames.insert(Qt::UserRole + 1 + int(i), roleNames.at(i));
}

QVariant RecordListModel::valueAt(int row, const QByteArray &role) const
{
    const int key = m_roleNames.key(role, -1);
    if (key < 0 || row < 0 || row >= rowCount())
        return {};
    return data(index(row), key);
}

} // namespace kestrine
