#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine {

/// One line of a Markdown body as the detail screen draws it.
struct MarkdownLine
{
    Q_GADGET
    QML_VALUE_TYPE(markdownLine)
    Q_PROPERTY(kestrine::MarkdownLine::Kind kind MEMBER kind)
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(int level MEMBER level)

public:
    enum Kind {
        Code,
        Heading,
        Bullet,
        Text,
        Blank,
    };
    Q_ENUM(Kind)

    Kind kind = Text;
    /// What is displayed: a heading without its "#"s and outer blanks, a bullet without its
    /// "- "/"* ", other kinds as written; empty for a blank line.
    QString text;
    /// 1 to 3 for a heading, 0 otherwise.
    int level = 0;

    bool operator==(const MarkdownLine &) const = default;
};

/// Classifies `markdown` line by line, without a Markdown engine: "```" lines open and close code
/// fences (and are not shown; an unclosed fence makes the rest code), "# " to "### " start
/// headings, "- " and "* " bullets, lines of only spaces and tabs are blank, everything else is
/// text (tables, numbered lists, quotes, nested lists and "#### " included). Lines are split at
/// "\n" only, so a Windows carriage return stays on its line, and a line holding just "\r" is
/// text, not blank.
QList<MarkdownLine> markdownLines(QStringView markdown);

/// The classified lines of one Markdown body, for a QML list. Roles: kind, text, level.
class MarkdownLinesModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString markdown READ markdown WRITE setMarkdown NOTIFY markdownChanged)
    Q_PROPERTY(int count READ rowCount NOTIFY markdownChanged)

public:
    enum Role {
        KindRole = Qt::UserRole + 1,
        TextRole,
        LevelRole,
    };

    explicit MarkdownLinesModel(QObject *parent = nullptr);

    const QString &markdown() const { return m_markdown; }
    void setMarkdown(const QString &markdown);

    const QList<MarkdownLine> &lines() const { return m_lines; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void markdownChanged();

private:
    QString m_markdown;
    QList<MarkdownLine> m_lines;
};

} // namespace kestrine
