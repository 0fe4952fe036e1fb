#include "diffmodel.h"

#include "qmlrecords_p.h"
#include "settingsstore.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QPointer>

namespace kestrine {

DiffModel::DiffModel(QObject *parent)
    : QAbstractListModel(parent)
    , SettingsUser(this, nullptr)
{}

DiffModel::DiffModel(SettingsStore &settings, Repository repo, qint64 prNumber, ChangedFile file,
                     QObject *parent)
    : QAbstractListModel(parent)
    , SettingsUser(this, &settings)
    , m_repo(std::move(repo))
    , m_prNumber(prNumber)
    , m_file(std::move(file))
{}

void DiffModel::setRepo(const Repository &repo)
{
    if (m_repo == repo)
        return;
    m_repo = repo;
    emit repoChanged();
}

void DiffModel::setPrNumber(qint64 prNumber)
{
    if (m_prNumber == prNumber)
        return;
    m_prNumber = prNumber;
    emit prNumberChanged();
}

void DiffModel::setFile(const ChangedFile &file)
{
    if (m_file == file)
        return;
    m_file = file;
    emit fileChanged();
}

void DiffModel::setFilename(const QString &filename)
{
    if (m_file.filename == filename)
        return;
    ChangedFile file;
    file.filename = filename;
    setFile(file);
}

QCoro::Task<> DiffModel::load()
{
    const QPointer<DiffModel> self(this);
    std::optional<QString> diff =
        co_await answerOf<QString>(configuredClient(), [this](const GiteaClient &client) {
            return client.diff(m_repo.owner.login, m_repo.name, m_prNumber);
        });
    if (!diff)
        co_return;

    // A pull request's diff can run to tens of megabytes: it is cut and split on a worker thread,
    // and the screen shows its progress indicator meanwhile, as during the download.
    ParsedDiff lines = co_await parseFileDiffInBackground(std::move(*diff), m_file.filename);
    if (!self)
        co_return;
    setLines(std::move(lines));
    // Splitting always yields at least one line, so this stays a safety net.
    if (m_lines.isEmpty())
        setErrorMessage(QCoreApplication::translate("DiffModel", "No diff content for this file."));
    setLoading(false);
}

void DiffModel::reload()
{
    // Runs on by itself; the QPointer check keeps it safe if the model goes first.
    load();
}

int DiffModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant DiffModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    switch (role) {
    case TextRole:
    case Qt::DisplayRole:
        return m_lines.text(index.row()).toString();
    case TypeRole:
        return int(m_lines.type(index.row()));
    default:
        return {};
    }
}

QHash<int, QByteArray> DiffModel::roleNames() const
{
    return {{TextRole, "text"}, {TypeRole, "type"}};
}

QVariant DiffModel::qmlRepo() const
{
    return toQmlValue(m_repo);
}

void DiffModel::setQmlRepo(const QVariant &repo)
{
    if (const auto decoded = detail::recordFromQml<Repository>(repo))
        setRepo(*decoded);
}

QVariant DiffModel::qmlFile() const
{
    return toQmlValue(m_file);
}

void DiffModel::setQmlFile(const QVariant &file)
{
    if (const auto decoded = detail::recordFromQml<ChangedFile>(file))
        setFile(*decoded);
}

void DiffModel::setLines(ParsedDiff lines)
{
    const int before = count();
    beginResetModel();
    m_lines = std::move(lines);
    endResetModel();
    if (count() != before)
        emit countChanged();
}

} // namespace kestrine
