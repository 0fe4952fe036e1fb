#pragma once

#include "diffparser.h"
#include "qmlservices.h"
#include "records.h"
#include "requestprogress.h"

#include <QAbstractListModel>
#include <QCoroTask>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace kestrine {

/// The diff of one changed file of a pull request, line by line, for the diff screen. It fetches
/// the whole pull request's diff and cuts out the file's section (see parseFileDiff). Roles: text
/// (the line as in the diff) and type (a DiffLineType::Value). Rows are told apart by their
/// position: every load resets the model.
class DiffModel : public QAbstractListModel, public SettingsUser, public RequestProgress<DiffModel>
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QVariant repo READ qmlRepo WRITE setQmlRepo NOTIFY repoChanged)
    Q_PROPERTY(qint64 prNumber READ prNumber WRITE setPrNumber NOTIFY prNumberChanged)
    Q_PROPERTY(QVariant file READ qmlFile WRITE setQmlFile NOTIFY fileChanged)
    /// The file by its name alone, which is all the diff is cut by.
    Q_PROPERTY(QString filename READ filename WRITE setFilename NOTIFY fileChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    /// "" when there is no error.
    Q_PROPERTY(QString errorMessage READ qmlErrorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        TextRole = Qt::UserRole + 1,
        TypeRole,
    };

    /// For QML, which sets the rest afterwards; the settings are its engine's.
    explicit DiffModel(QObject *parent = nullptr);
    DiffModel(SettingsStore &settings, Repository repo, qint64 prNumber, ChangedFile file,
              QObject *parent = nullptr);

    const Repository &repo() const { return m_repo; }
    void setRepo(const Repository &repo);
    qint64 prNumber() const { return m_prNumber; }
    void setPrNumber(qint64 prNumber);
    const ChangedFile &file() const { return m_file; }
    void setFile(const ChangedFile &file);
    const QString &filename() const { return m_file.filename; }
    /// Points the model at the file called `filename`; nothing changes when it already is.
    void setFilename(const QString &filename);

    const ParsedDiff &lines() const { return m_lines; }
    int count() const { return int(m_lines.size()); }

    /// Fetches the pull request's diff and shows this file's part of it. On failure the lines
    /// shown so far stay. Never throws.
    QCoro::Task<> load();
    Q_INVOKABLE void reload();

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    QVariant qmlRepo() const;
    void setQmlRepo(const QVariant &repo);
    QVariant qmlFile() const;
    void setQmlFile(const QVariant &file);

signals:
    void repoChanged();
    void prNumberChanged();
    void fileChanged();
    void isLoadingChanged();
    void errorMessageChanged();
    void countChanged();

private:
    void setLines(ParsedDiff lines);

    Repository m_repo;
    qint64 m_prNumber = 0;
    ChangedFile m_file;
    ParsedDiff m_lines;
};

} // namespace kestrine
