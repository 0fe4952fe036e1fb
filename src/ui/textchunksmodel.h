#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// A long text cut into pieces of whole lines, for a list view that lays out and draws only the
/// pieces on screen: a job log of many megabytes then opens at once, where a single text item
/// would lay out every line first. The pieces, joined, are exactly the text (escape sequences,
/// carriage returns and all); each but the last ends with its line break. Role: "chunk".
class TextChunksModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(int count READ count NOTIFY textChanged)
    /// At most this many lines per piece.
    Q_PROPERTY(
        int linesPerChunk READ linesPerChunk WRITE setLinesPerChunk NOTIFY linesPerChunkChanged)

public:
    enum Role {
        TextRole = Qt::UserRole + 1,
    };

    explicit TextChunksModel(QObject *parent = nullptr);

    const QString &text() const { return m_text; }
    void setText(const QString &text);
    int linesPerChunk() const { return m_linesPerChunk; }
    void setLinesPerChunk(int lines);
    int count() const { return int(m_starts.size()); }

    /// Piece `index`; the pieces concatenated give text().
    Q_INVOKABLE QString chunk(int index) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void textChanged();
    void linesPerChunkChanged();

private:
    void rebuild();

    QString m_text;
    int m_linesPerChunk = 80;
    /// Where each piece starts in m_text; an empty text has no pieces.
    QList<qsizetype> m_starts;
};

} // namespace kestrine::ui
