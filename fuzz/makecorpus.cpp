// Writes the seed corpora under fuzz/corpus/<target>/ from real-shaped answers: the Gitea
// simulation serves tests/data/gitea/seed.json on 127.0.0.1, and every endpoint the app calls is
// fetched once with the seed's token. Run by `make fuzz-corpus`; the output is committed, so a
// fuzz run needs no server.
//
//   fuzz_corpus_tool [output directory]     (default: fuzz/corpus of the source tree)

#include "giteahttpserver.h"
#include "giteasimulation.h"
#include "logstore.h"
#include "notificationstate.h"
#include "prrow.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSet>
#include <QTimer>
#include <cstdio>

using namespace kestrine;

namespace {

const QByteArray token = "4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d";

struct Answer
{
    int status = 0;
    QByteArray body;
};

class Corpus
{
public:
    Corpus(QString root, QByteArray serverAuthority)
        : m_root(std::move(root))
        , m_serverAuthority(std::move(serverAuthority))
    {}

    /// Writes `bytes` as one seed of `target`, named by `name` (made file-safe). The server's
    /// address becomes an instance's host name, so that seeds do not change with the port.
    void add(const QString &target, QString name, QByteArray bytes)
    {
        bytes.replace(m_serverAuthority, "gitea.example.org");
        static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]+"));
        name.replace(unsafe, QStringLiteral("_"));
        const QString directory = m_root + u'/' + target;
        QDir().mkpath(directory);
        QFile file(directory + u'/' + name);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) < 0) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
            std::exit(1);
        }
        ++m_count;
    }

    int count() const { return m_count; }

private:
    QString m_root;
    QByteArray m_serverAuthority;
    int m_count = 0;
};

class Fetcher
{
public:
    explicit Fetcher(QUrl base)
        : m_base(std::move(base))
    {}

    /// One request to the simulation; the answer whatever its status. At most 10 s each.
    Answer fetch(const QByteArray &method, const QString &path, const QByteArray &authorization,
                 const QByteArray &body = {})
    {
        QUrl url = m_base;
        const qsizetype question = path.indexOf(u'?');
        url.setPath(QStringLiteral("/api/v1/") + path.left(question));
        if (question >= 0)
            url.setQuery(path.mid(question + 1));
        QNetworkRequest request(url);
        request.setRawHeader("Authorization", authorization);
        request.setRawHeader("Accept", "application/json");
        if (!body.isEmpty())
            request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
        request.setTransferTimeout(10000);
        QNetworkReply *reply = m_session.sendCustomRequest(request, method, body);
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        Answer answer{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                      reply->readAll()};
        reply->deleteLater();
        m_log.append({method + ' ' + path.left(question).toUtf8(), answer.status});
        return answer;
    }

    Answer get(const QString &path) { return fetch("GET", path, "token " + token); }

    /// "<METHOD> <path>" and the status of every request so far.
    const QList<std::pair<QByteArray, int>> &log() const { return m_log; }

private:
    QUrl m_base;
    QNetworkAccessManager m_session;
    QList<std::pair<QByteArray, int>> m_log;
};

/// The two bytes fuzz_servermessage reads as the status (100 + value % 500).
QByteArray withStatus(int status, const QByteArray &body)
{
    const int value = status - 100;
    return QByteArray(1, char(value >> 8)) + QByteArray(1, char(value & 0xff)) + body;
}

QJsonArray array(const Answer &answer)
{
    return QJsonDocument::fromJson(answer.body).array();
}

/// Every string value under `value` that looks like a date, for the date rule's seeds.
void collectDates(const QJsonValue &value, QSet<QString> *dates)
{
    static const QRegularExpression dateLike(QStringLiteral("^[0-9]{4}-[0-9]{2}-[0-9]{2}T"));
    if (value.isString() && dateLike.match(value.toString()).hasMatch()) {
        dates->insert(value.toString());
    } else if (value.isArray()) {
        for (const QJsonValue &element : value.toArray())
            collectDates(element, dates);
    } else if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            collectDates(it.value(), dates);
    }
}

/// Markdown bodies (pull requests, reviews, comments) anywhere under `value`.
void collectBodies(const QJsonValue &value, QList<QString> *bodies)
{
    if (value.isArray()) {
        for (const QJsonValue &element : value.toArray())
            collectBodies(element, bodies);
    } else if (value.isObject()) {
        const QJsonObject object = value.toObject();
        const QJsonValue body = object.value(QLatin1StringView("body"));
        if (body.isString() && !body.toString().isEmpty())
            bodies->append(body.toString());
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                  : QStringLiteral(KESTRINE_SOURCE_DIR "/fuzz/corpus");

    GiteaSimulation simulation(QStringLiteral(KESTRINE_SOURCE_DIR "/tests/data/gitea/seed.json"));
    if (!simulation.isValid()) {
        std::fprintf(stderr, "seed: %s\n", qPrintable(simulation.loadError()));
        return 1;
    }
    GiteaHttpServer server;
    if (!server.listen())
        return 1;
    simulation.install(&server);
    // The simulation's answers take the given time for "now"; fixed, so the corpus is stable.
    simulation.setClock([] { return QDateTime(QDate(2024, 5, 2), QTime(12, 0), Qt::UTC); });

    Corpus corpus(root, "127.0.0.1:" + QByteArray::number(server.port()));
    Fetcher fetcher(server.baseUrl());
    QSet<QString> dates;
    QList<QString> bodies;
    QList<PRRow> rows;
    NotificationState state;

    auto record = [&](const QString &name, const Answer &answer) {
        corpus.add(QStringLiteral("records"), name, answer.body);
        const QJsonDocument document = QJsonDocument::fromJson(answer.body);
        const QJsonValue value =
            document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
        collectDates(value, &dates);
        collectBodies(value, &bodies);
    };

    record(QStringLiteral("user"), fetcher.get(QStringLiteral("user")));
    const Answer repos = fetcher.get(QStringLiteral("user/repos?limit=50&page=1"));
    record(QStringLiteral("repos"), repos);

    for (const QJsonValue &repoValue : array(repos)) {
        const QJsonObject repoObject = repoValue.toObject();
        const QString fullName = repoObject.value(QLatin1StringView("full_name")).toString();
        const QString prefix = QStringLiteral("repos/") + fullName;
        const QString tag = QString(fullName).replace(u'/', u'-');
        record(tag + QStringLiteral("-repository"),
               Answer{200, QJsonDocument(repoObject).toJson()});

        const Answer pulls = fetcher.get(prefix + QStringLiteral("/pulls?state=open&limit=100"));
        record(tag + QStringLiteral("-pulls"), pulls);
        const Repository repository = decodeJson<Repository>(QJsonValue(repoObject));

        for (const QJsonValue &pullValue : array(pulls)) {
            const QJsonObject pull = pullValue.toObject();
            const int number = pull.value(QLatin1StringView("number")).toInt();
            const QString pr = prefix + QStringLiteral("/pulls/") + QString::number(number);
            const QString name = tag + u'-' + QString::number(number);
            rows.append(PRRow{repository, decodeJson<PullRequest>(QJsonValue(pull))});
            state.announcedNewPRs.insert(rows.last().id());

            record(name + QStringLiteral("-pull"), fetcher.get(pr));
            record(name + QStringLiteral("-reviews"), fetcher.get(pr + QStringLiteral("/reviews")));
            record(name + QStringLiteral("-comments"),
                   fetcher.get(prefix + QStringLiteral("/issues/") + QString::number(number) +
                               QStringLiteral("/comments")));
            const Answer files = fetcher.get(pr + QStringLiteral("/files"));
            record(name + QStringLiteral("-files"), files);
            record(name + QStringLiteral("-commits"), fetcher.get(pr + QStringLiteral("/commits")));

            const Answer diff = fetcher.get(pr + QStringLiteral(".diff"));
            for (const QJsonValue &file : array(files)) {
                const QByteArray filename =
                    file.toObject().value(QLatin1StringView("filename")).toString().toUtf8();
                corpus.add(QStringLiteral("diff"), name + u'-' + QString::fromUtf8(filename),
                           filename + '\n' + diff.body);
            }

            const QString sha = pull.value(QLatin1StringView("head"))
                                    .toObject()
                                    .value(QLatin1StringView("sha"))
                                    .toString();
            const Answer runs = fetcher.get(prefix + QStringLiteral("/actions/runs?head_sha=") +
                                            sha + QStringLiteral("&limit=20"));
            record(name + QStringLiteral("-runs"), runs);
            const QJsonArray runList =
                QJsonDocument::fromJson(runs.body).object().value("workflow_runs").toArray();
            if (!runList.isEmpty()) {
                const QJsonObject newest = runList.first().toObject();
                state.ciStatusByPR.insert(
                    rows.last().id(),
                    newest.value("conclusion").toString(QStringLiteral("running")));
            }
            for (const QJsonValue &run : runList) {
                const QString id = QString::number(run.toObject().value("id").toInteger());
                record(name + QStringLiteral("-run-") + id + QStringLiteral("-jobs"),
                       fetcher.get(prefix + QStringLiteral("/actions/runs/") + id +
                                   QStringLiteral("/jobs")));
            }
        }
    }

    // Error bodies as the simulation writes Gitea's: wrong token, unknown repository, refused
    // writes; each led by the status it came with.
    const QList<Answer> refusals = {
        fetcher.fetch("GET", QStringLiteral("user"), "token wrong"),
        fetcher.fetch("GET", QStringLiteral("user"), QByteArray()),
        fetcher.get(QStringLiteral("repos/ann/nothing/pulls")),
        fetcher.fetch("POST", QStringLiteral("repos/ann/tool/pulls/8/merge"), "token " + token,
                      R"({"Do":"squash"})"),
        fetcher.fetch("POST", QStringLiteral("repos/ann/tool/pulls/9/merge"), "token " + token,
                      R"({"Do":"nonsense"})"),
        fetcher.fetch("POST", QStringLiteral("repos/ann/tool/pulls/7/update?style=merge"),
                      "token " + token),
        fetcher.fetch("DELETE", QStringLiteral("repos/cy/infra/branches/main"), "token " + token),
        fetcher.fetch("POST", QStringLiteral("repos/ann/tool/actions/runs/999/rerun"),
                      "token " + token),
    };
    int index = 0;
    for (const Answer &answer : refusals) {
        corpus.add(QStringLiteral("servermessage"),
                   QStringLiteral("refusal-%1-%2").arg(index++).arg(answer.status),
                   withStatus(answer.status, answer.body));
    }
    corpus.add(QStringLiteral("servermessage"), QStringLiteral("errors-array"),
               withStatus(422, R"({"errors":["a"],"message":"x","url":"u"})"));

    // A dozen of the dates the answers hold (Go's zero time among them) are seeds enough.
    QStringList someDates(dates.begin(), dates.end());
    someDates.sort();
    for (const QString &date : someDates.mid(0, 12))
        corpus.add(QStringLiteral("dates"), date, date.toUtf8());
    corpus.add(QStringLiteral("dates"), QStringLiteral("offset"), "2024-05-01T12:20:30+02:00");
    corpus.add(QStringLiteral("dates"), QStringLiteral("fraction"), "2024-05-01T10:20:30.123Z");
    // Go's zero time as a server outside UTC may write it, and the last second Go can write.
    corpus.add(QStringLiteral("dates"), QStringLiteral("zero-offset"), "0001-01-01T00:00:00+00:00");
    corpus.add(QStringLiteral("dates"), QStringLiteral("last-second"), "9999-12-31T23:59:59Z");

    index = 0;
    for (const QString &body : std::as_const(bodies)) {
        corpus.add(QStringLiteral("markdown"),
                   QStringLiteral("body-%1-").arg(index++) +
                       QString::fromLatin1(
                           QCryptographicHash::hash(body.toUtf8(), QCryptographicHash::Sha1)
                               .toHex()
                               .left(8)),
                   body.toUtf8());
    }

    auto rowsFile = [](const QList<PRRow> &list, DateEncoding dates) {
        return QJsonDocument(encodeJson(list, dates).toArray()).toJson(QJsonDocument::Compact);
    };
    corpus.add(QStringLiteral("inboxcache"), QStringLiteral("rows-date-texts"),
               rowsFile(rows, DateEncoding::InternetDateTime));
    corpus.add(QStringLiteral("inboxcache"), QStringLiteral("rows-as-written"),
               rowsFile(rows, DateEncoding::SecondsSinceReferenceDate));
    corpus.add(QStringLiteral("inboxcache"), QStringLiteral("empty"), "[]");

    corpus.add(QStringLiteral("notificationstate"), QStringLiteral("after-passes"), state.toJson());
    corpus.add(QStringLiteral("notificationstate"), QStringLiteral("empty"),
               NotificationState().toJson());

    QList<LogEntry> entries;
    QDateTime when(QDate(2024, 5, 1), QTime(10, 20, 30), Qt::UTC);
    for (const auto &[request, status] : fetcher.log()) {
        const LogLevel level = status < 300    ? LogLevel::Info
                               : status == 409 ? LogLevel::Warn
                                               : LogLevel::Error;
        entries.append(
            {QUuid::createUuid(), when, level,
             QString::fromUtf8(request) + QStringLiteral(" \u2192 ") + QString::number(status)});
        when = when.addSecs(1);
    }
    entries.append({QUuid::createUuid(), when, LogLevel::Info, QStringLiteral("Inbox: 4/4 repos")});
    corpus.add(QStringLiteral("logstore"), QStringLiteral("session"), LogStore::encode(entries));
    corpus.add(QStringLiteral("logstore"), QStringLiteral("empty"), "[]");

    std::printf("wrote %d seeds under %s\n", corpus.count(), qPrintable(root));
    return 0;
}
