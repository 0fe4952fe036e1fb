#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

QT_BEGIN_NAMESPACE
class QThreadPool;
QT_END_NAMESPACE

namespace kestrine::ui {

/// A long text cut into pieces of whole lines, for a list view that lays out and draws only the
/// pieces on screen: a job log of many megabytes then opens at once, where a single text item
/// would lay out every line first. The pieces, joined, are exactly the text (escape sequences,
/// carriage returns and all); each but the last ends with its line break. Role: "chunk".
///
/// A text of up to `splitAtOnceLimit` characters is cut at once. A longer one is cut on a worker
/// thread (finding every line break of a log of millions of characters takes milliseconds that
/// the screen needs for drawing): `splitting` is true meanwhile, and the pieces of the text set
/// before stay in the list until the new ones replace them in one reset.
class TextChunksModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    /// How many pieces the list holds now.
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// At most this many lines per piece.
    Q_PROPERTY(
        int linesPerChunk READ linesPerChunk WRITE setLinesPerChunk NOTIFY linesPerChunkChanged)
    /// The pieces of the latest text are still being found on a worker thread.
    Q_PROPERTY(bool splitting READ isSplitting NOTIFY splittingChanged)

public:
    enum Role {
        TextRole = Qt::UserRole + 1,
    };

    /// Texts up to this many characters are cut on the spot, in well under a millisecond.
    static constexpr qsizetype splitAtOnceLimit = 256 * 1024;

    explicit TextChunksModel(QObject *parent = nullptr);

    const QString &text() const { return m_text; }
    void setText(const QString &text);
    int linesPerChunk() const { return m_linesPerChunk; }
    void setLinesPerChunk(int lines);
    int count() const { return int(m_starts.size()); }
    bool isSplitting() const { return m_splitting; }

    /// Piece `index` of the text the list shows; the pieces concatenated give that text.
    Q_INVOKABLE QString chunk(int index) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Where each piece of `text` starts, at most `linesPerChunk` lines a piece; none for an
    /// empty text.
    static QList<qsizetype> pieceStarts(const QString &text, int linesPerChunk);
    /// The one worker thread (a WorkerThread) long texts are cut on.
    static QThreadPool *splittingThread();

signals:
    void textChanged();
    void countChanged();
    void linesPerChunkChanged();
    void splittingChanged();

private:
    void split();
    void show(const QString &text, QList<qsizetype> starts);
    void setSplitting(bool splitting);

    /// The latest text set.
    QString m_text;
    int m_linesPerChunk = 80;
    /// The text the pieces below are cut from: m_text, or the one before it while the pieces of a
    /// long one are still being found.
    QString m_shown;
    /// Where each piece starts in m_shown.
    QList<qsizetype> m_starts;
    /// Counts the splits started, so that only the latest one's pieces are shown.
    quint64 m_generation = 0;
    bool m_splitting = false;
};

} // namespace kestrine::ui
