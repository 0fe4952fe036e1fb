#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QVariant>
#include <functional>
#include <utility>

namespace kestrine {

/// A list of records for QML, one row per record, read through named roles. The rows follow the
/// server's list by identity: see KeyedListModel::setItems.
class RecordListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    int count() const { return rowCount(); }
    QHash<int, QByteArray> roleNames() const override { return m_roleNames; }

    /// The value of role `role` (by its name) at `row`; undefined when there is no such row or
    /// role. For code that holds the model but no delegate, such as a test or the screenshot tour.
    Q_INVOKABLE QVariant valueAt(int row, const QByteArray &role) const;

signals:
    void countChanged();

protected:
    /// The roles are numbered from Qt::UserRole + 1 in the order of `roleNames`.
    RecordListModel(const QList<QByteArray> &roleNames, QObject *parent);

private:
    QHash<int, QByteArray> m_roleNames;
};

/// A RecordListModel of `T`s told apart by a key, whose rows are kept across updates: a delegate
/// stays with its record for as long as the record stays in the list. Each role is a name and how
/// its value is worked out from a record.
template <class T, class Key>
class KeyedListModel : public RecordListModel
{
public:
    using KeyOf = Key (*)(const T &);
    using Role = std::pair<QByteArray, std::function<QVariant(const T &)>>;

    KeyedListModel(KeyOf keyOf, const QList<Role> &roles, QObject *parent = nullptr)
        : RecordListModel(namesOf(roles), parent)
        , m_keyOf(keyOf)
    {
        for (const Role &role : roles)
            m_values.append(role.second);
    }

    const QList<T> &items() const { return m_items; }

    /// Brings the rows to `items` by their keys: a row whose key went is removed, a new key is
    /// inserted, a key that moved is moved, and a row whose record changed reports dataChanged.
    /// Rows that stay the same report nothing.
    void setItems(const QList<T> &items);

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_items.size());
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        const qsizetype value = qsizetype(role) - (Qt::UserRole + 1);
        if (!checkIndex(index,
                        CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid) ||
            value < 0 || value >= m_values.size())
            return {};
        return m_values.at(value)(m_items.at(index.row()));
    }

private:
    static QList<QByteArray> namesOf(const QList<Role> &roles)
    {
        QList<QByteArray> names;
        for (const Role &role : roles)
            names.append(role.first);
        return names;
    }

    Key keyOf(const T &item) const { return m_keyOf(item); }
    bool hasUniqueKeys(const QList<T> &items) const;
    /// The keys of `items`.
    QSet<Key> keysOf(const QList<T> &items) const;

    KeyOf m_keyOf;
    QList<std::function<QVariant(const T &)>> m_values;
    QList<T> m_items;
};

template <class T, class Key>
QSet<Key> KeyedListModel<T, Key>::keysOf(const QList<T> &items) const
{
    QSet<Key> keys;
    keys.reserve(items.size());
    for (const T &item : items)
        keys.insert(keyOf(item));
    return keys;
}

template <class T, class Key>
bool KeyedListModel<T, Key>::hasUniqueKeys(const QList<T> &items) const
{
    return keysOf(items).size() == items.size();
}

template <class T, class Key>
void KeyedListModel<T, Key>::setItems(const QList<T> &items)
{
    if (m_items == items)
        return;
    const qsizetype before = m_items.size();
    if (!hasUniqueKeys(m_items) || !hasUniqueKeys(items)) {
        // Two records under one key (a server's mistake) cannot be told apart, so there is no
        // saying which row became which: the only sensible update is to start over.
        beginResetModel();
        m_items = items;
        endResetModel();
        emit countChanged();
        return;
    }

    // Rows whose key went, last first, a run of neighbours at a time.
    const QSet<Key> wanted = keysOf(items);
    for (qsizetype last = m_items.size() - 1; last >= 0;) {
        if (wanted.contains(keyOf(m_items.at(last)))) {
            --last;
            continue;
        }
        qsizetype first = last;
        while (first > 0 && !wanted.contains(keyOf(m_items.at(first - 1))))
            --first;
        beginRemoveRows({}, int(first), int(last));
        m_items.remove(first, last - first + 1);
        endRemoveRows();
        last = first - 1;
    }

    // Then row by row: what is left is in place, moved up to its place, or new.
    const QSet<Key> present = keysOf(m_items);
    for (qsizetype row = 0; row < items.size(); ++row) {
        const Key key = keyOf(items.at(row));
        if (!present.contains(key)) {
            qsizetype last = row;
            while (last + 1 < items.size() && !present.contains(keyOf(items.at(last + 1))))
                ++last;
            beginInsertRows({}, int(row), int(last));
            for (qsizetype i = row; i <= last; ++i)
                m_items.insert(i, items.at(i));
            endInsertRows();
            row = last;
            continue;
        }
        qsizetype at = row;
        while (keyOf(m_items.at(at)) != key)
            ++at;
        if (at != row) {
            beginMoveRows({}, int(at), int(at), {}, int(row));
            m_items.move(at, row);
            endMoveRows();
        }
        if (!(m_items.at(row) == items.at(row))) {
            m_items[row] = items.at(row);
            emit dataChanged(index(int(row)), index(int(row)));
        }
    }
    if (m_items.size() != before)
        emit countChanged();
}

} // namespace kestrine
