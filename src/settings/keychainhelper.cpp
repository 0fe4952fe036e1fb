#include "keychainhelper.h"

#include "storagemode.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QHash>
#include <QStringDecoder>
#include <QTimer>
#include <memory>
#include <qt6keychain/keychain.h>

namespace kestrine::KeychainHelper {
namespace {

template <class JobType>
std::unique_ptr<JobType> makeJob(const QString &key)
{
    auto job = std::make_unique<JobType>(QString(service));
    // The job is ours until it finishes (see runToEnd for the one exception).
    job->setAutoDelete(false);
    // Never fall back to a plain-text file: a credential that cannot go to the secure store is
    // not stored at all.
    job->setInsecureFallback(false);
    job->setKey(key);
    return job;
}

/// Starts `job` and waits, in a local event loop, until it finishes or `jobTimeout` passes.
/// True when it finished in time without an error.
///
/// On a timeout the backend may still hold the job and call it back later (libsecret keeps a raw
/// pointer to it until its D-Bus call returns), so it must not be destroyed here: ownership passes
/// to the job itself, which deletes itself once it finishes, and `job` is left empty.
template <class JobType>
bool runToEnd(std::unique_ptr<JobType> &job)
{
    // Without an application object there is no event loop to drive the job.
    if (!QCoreApplication::instance())
        return false;

    QEventLoop loop;
    bool finished = false;
    // Both connections have the loop as their context and die with it.
    QObject::connect(job.get(), &QKeychain::Job::finished, &loop, [&finished, &loop] {
        finished = true;
        loop.quit();
    });
    QTimer timeout;
    timeout.setSingleShot(true);
    QObject::connect(&timeout, &QTimer::timeout, &loop, &QEventLoop::quit);
    timeout.start(jobTimeout);

    // start() only queues the job, so it cannot finish before the loop runs. User input waits
    // until the loop ends: a tap must not start a second settings change in the middle of this one.
    job->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);

    if (!finished) {
        job->setAutoDelete(true);
        job.release();
        return false;
    }
    return job->error() == QKeychain::NoError;
}

/// `bytes` as text when they are valid UTF-8, else nothing. A leading byte order mark is kept as
/// part of the value, and a truncated sequence at the end is an error, not silently dropped.
std::optional<QString> decodeUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

/// The items of ephemeral storage mode: held in memory for this process only, so that the
/// keychain itself is never opened (see storagemode.h).
QHash<QString, QString> &ephemeralItems()
{
    static QHash<QString, QString> items;
    return items;
}

} // namespace

std::optional<QString> get(const QString &key)
{
    if (Storage::isEphemeral()) {
        const auto it = ephemeralItems().constFind(key);
        return it != ephemeralItems().cend() ? std::optional(*it) : std::nullopt;
    }
    auto job = makeJob<QKeychain::ReadPasswordJob>(key);
    if (!runToEnd(job))
        return std::nullopt;
    // The raw bytes, not textData(): that one would turn invalid UTF-8 into U+FFFD.
    return decodeUtf8(job->binaryData());
}

void set(const QString &value, const QString &key)
{
    if (Storage::isEphemeral()) {
        ephemeralItems().insert(key, value);
        return;
    }
    // Delete, then add: what is stored afterwards is exactly one item holding this value, with
    // nothing carried over from the old one. The delete's outcome does not matter (there may have
    // been no item), and a failed add is silent by design.
    remove(key);
    auto job = makeJob<QKeychain::WritePasswordJob>(key);
    // Text data: the item holds the UTF-8 bytes themselves (binary data would be stored base64).
    job->setTextData(value);
    runToEnd(job);
}

void remove(const QString &key)
{
    if (Storage::isEphemeral()) {
        ephemeralItems().remove(key);
        return;
    }
    auto job = makeJob<QKeychain::DeletePasswordJob>(key);
    runToEnd(job);
}

} // namespace kestrine::KeychainHelper
