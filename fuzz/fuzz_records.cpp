// Every record of the API, every list of them, and the two envelopes of the Actions lists, decoded
// from whatever bytes a server might send. The quick reader agrees with Qt's parser on every input
// it takes. Beyond not crashing, a value that decodes must survive being written and read again:
// - written with date texts (what QML and the log see) it reads back as itself, dates to the
//   whole second, and writing it again gives the same JSON;
// - the same through the bytes of a compact JSON document;
// - written with numeric dates (what the inbox cache writes) it reads back exactly when it holds
//   no date, since every decoder accepts date texts only;
// - equal values hash equally.

#include "fuzzsupport.h"
#include "records.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

/// Gitea's wrapped lists, {"workflow_runs": [...], "total_count": 3} and {"jobs": [...]}, in the
/// shape the client's runs() and jobs() decode them (that one is private to the client).
template <class Item, const char *Key>
struct ListEnvelope
{
    std::optional<QList<Item>> items;

    static constexpr auto fields() { return std::tuple{field(Key, &ListEnvelope::items)}; }
    bool operator==(const ListEnvelope &) const = default;
};

constexpr char workflowRunsKey[] = "workflow_runs";
constexpr char jobsKey[] = "jobs";

QByteArray documentBytes(const QJsonValue &value)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    return document.toJson(QJsonDocument::Compact);
}

template <class T>
void checkHash(const T &a, const T &b)
{
    if constexpr (JsonRecord<T>)
        check(qHash(a) == qHash(b), "equal records hash equally");
}

void checkCommitIdentity(const PRCommit &commit)
{
    const QString id = commit.id();
    if (commit.sha) {
        check(id == *commit.sha, "a commit with a sha is named by it");
    } else if (commit.commit && commit.commit->sha) {
        check(id == *commit.commit->sha, "else by its inner commit's sha");
    } else {
        const QString author = commit.author && commit.author->name ? *commit.author->name : "";
        check(id.startsWith(author + u'-'), "else by its author's name and a hash", id);
        if (!commit.commit || !commit.commit->message)
            check(id == author + QStringLiteral("-0"), "without a message the hash is 0", id);
    }
}

template <class T>
void exercise(const QJsonValue &input, const char *type)
{
    const std::optional<T> decoded = tryDecode<T>(input);
    if (!decoded)
        return;
    const T expected = withWholeSecondDates(*decoded);
    const QString what = QString::fromLatin1(type);

    const QJsonValue asText = encodeJson(*decoded, DateEncoding::InternetDateTime);
    const std::optional<T> again = tryDecode<T>(asText);
    check(again.has_value(), "a value written with date texts decodes again", what);
    check(*again == expected, "and reads back as itself", what);
    check(encodeJson(*again, DateEncoding::InternetDateTime) == asText,
          "writing it again gives the same JSON", what);
    checkHash(*again, expected);

    const std::optional<T> fromBytes = tryDecode<T>(documentBytes(asText));
    check(fromBytes.has_value() && *fromBytes == expected,
          "the same holds through a JSON document's bytes", what);

    const std::optional<T> numeric =
        tryDecode<T>(encodeJson(*decoded, DateEncoding::SecondsSinceReferenceDate));
    check(numeric.has_value() == !containsDate(*decoded),
          "numeric dates read back exactly when there are none", what);
    if (numeric)
        check(*numeric == *decoded, "a value without dates reads back as itself", what);

    check(!toQmlValue(*decoded).isNull(), "QML gets a value for every decoded one", what);

    if constexpr (std::is_same_v<T, PRCommit>)
        checkCommitIdentity(*decoded);
    if constexpr (std::is_same_v<T, QList<PRCommit>>) {
        for (const PRCommit &commit : *decoded)
            checkCommitIdentity(commit);
    }
}

/// The quick reader either gives up on `input` or agrees with decoding through Qt's parser: what
/// it reads, that reads the same; what it refuses, that refuses too.
template <class T>
void compareReaders(const QByteArray &input, const char *type)
{
    using Outcome = typename jsondetail::QuickReading<T>::Outcome;
    const jsondetail::QuickReading<T> quick = jsondetail::readQuickly<T>(input);
    if (quick.outcome == Outcome::GaveUp)
        return;
    std::optional<T> throughQt;
    try {
        const jsondetail::CodingPath root;
        throughQt = jsondetail::decodeValue<T>(jsondetail::parseDocument(input), root);
    } catch (const DecodeError &) {
    }
    const QString what = QString::fromLatin1(type);
    if (quick.outcome == Outcome::Refused) {
        check(!throughQt.has_value(), "what the quick reader refuses, the decoder refuses", what);
        return;
    }
    check(throughQt.has_value(),
          "the quick reader takes only what Qt's parser and the decoder take", what);
    check(quick.value == *throughQt, "and reads it as they do", what);
}

template <class T>
constexpr bool isEnvelope = false;
template <class Item, const char *Key>
constexpr bool isEnvelope<ListEnvelope<Item, Key>> = true;

/// Calls `visit.operator()<T>(name)` for every record of the API and the two envelopes.
template <class Visit>
void forEachRecordType(Visit &&visit)
{
    visit.template operator()<PullRequest>("PullRequest");
    visit.template operator()<Repository>("Repository");
    visit.template operator()<PRUser>("PRUser");
    visit.template operator()<Owner>("Owner");
    visit.template operator()<Branch>("Branch");
    visit.template operator()<PRLabel>("PRLabel");
    visit.template operator()<PullReview>("PullReview");
    visit.template operator()<IssueComment>("IssueComment");
    visit.template operator()<PRCommit>("PRCommit");
    visit.template operator()<ChangedFile>("ChangedFile");
    visit.template operator()<ActionRun>("ActionRun");
    visit.template operator()<ActionJob>("ActionJob");
    visit.template operator()<ListEnvelope<ActionRun, workflowRunsKey>>("runs envelope");
    visit.template operator()<ListEnvelope<ActionJob, jobsKey>>("jobs envelope");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = bytes(data, size);

    // The codec's own entry point on the raw bytes, parse errors included.
    tryDecode<PullRequest>(input);
    tryDecode<QList<Repository>>(input);
    forEachRecordType([&]<class T>(const char *type) {
        compareReaders<T>(input, type);
        compareReaders<QList<T>>(input, type);
    });

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(input, &error);
    if (error.error != QJsonParseError::NoError)
        return 0;
    const QJsonValue value =
        document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());

    forEachRecordType([&]<class T>(const char *type) {
        exercise<T>(value, type);
        if constexpr (!isEnvelope<T>)
            exercise<QList<T>>(value, type);
    });

    // A nested value on its own, as the envelopes' lists and a pull request's branches sit.
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        exercise<QList<ActionRun>>(object.value(QLatin1StringView("workflow_runs")), "runs");
        exercise<QList<ActionJob>>(object.value(QLatin1StringView("jobs")), "jobs");
        exercise<Branch>(object.value(QLatin1StringView("head")), "head");
    }
    return 0;
}
