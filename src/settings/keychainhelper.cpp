#include "keychainhelper.h"

#include "storagemode.h"

#include <QCoreApplication>
#include <QCoroSignal>
#include <QHash>
#include <QStringDecoder>
#include <memory>
#include <qt6keychain/keychain.h>

namespace kestrine::KeychainHelper {
namespace {

template <class JobType>
std::unique_ptr<JobType> makeJob(const QString &key)
{
    auto job = std::make_unique<JobType>(QString(service));
    // The job is ours until it finishes (see finishes() for the one exception).
    job->setAutoDelete(false);
    // Never fall back to a plain-text file: a credential that cannot go to the secure store is
    // not stored at all.
    job->setInsecureFallback(false);
    job->setKey(key);
    return job;
}

/// Starts `job` and waits, without blocking the event loop, until it finishes or `jobTimeout`
/// passes. True when it finished in time without an error.
///
/// On a timeout the backend may still hold the job and call it back later (libsecret keeps a raw
/// pointer to it until its D-Bus call returns), so it must not be destroyed here: ownership passes
/// to the job itself, which deletes itself once it finishes, and `job` is left empty.
QCoro::Task<bool> finishes(std::unique_ptr<QKeychain::Job> &job)
{
    // Without an application object there is no event loop to drive the job.
    if (!QCoreApplication::instance())
        co_return false;
    // start() only queues the job, so it cannot finish before the wait below has begun.
    job->start();
    const auto finished = co_await qCoro(job.get(), &QKeychain::Job::finished, jobTimeout);
    if (!finished) {
        job->setAutoDelete(true);
        job.release();
        co_return false;
    }
    co_return job->error() == QKeychain::NoError;
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

QCoro::Task<std::optional<QString>> get(QString key)
{
    if (Storage::isEphemeral()) {
        const auto it = ephemeralItems().constFind(key);
        co_return it != ephemeralItems().cend() ? std::optional(*it) : std::nullopt;
    }
    std::unique_ptr<QKeychain::Job> job = makeJob<QKeychain::ReadPasswordJob>(key);
    if (!co_await finishes(job))
        co_return std::nullopt;
    // The raw bytes, not textData(): that one would turn invalid UTF-8 into U+FFFD.
    co_return decodeUtf8(static_cast<QKeychain::ReadPasswordJob *>(job.get())->binaryData());
}

QCoro::Task<> set(QString value, QString key)
{
    if (Storage::isEphemeral()) {
        ephemeralItems().insert(key, value);
        co_return;
    }
    // Delete, then add: what is stored afterwards is exactly one item holding this value, with
    // nothing carried over from the old one. The delete's outcome does not matter (there may have
    // been no item), and a failed add is silent by design.
    co_await remove(key);
    auto write = makeJob<QKeychain::WritePasswordJob>(key);
    // Text data: the item holds the UTF-8 bytes themselves (binary data would be stored base64).
    write->setTextData(value);
    std::unique_ptr<QKeychain::Job> job = std::move(write);
    co_await finishes(job);
}

QCoro::Task<> remove(QString key)
{
    if (Storage::isEphemeral()) {
        ephemeralItems().remove(key);
        co_return;
    }
    std::unique_ptr<QKeychain::Job> job = makeJob<QKeychain::DeletePasswordJob>(key);
    co_await finishes(job);
}

} // namespace kestrine::KeychainHelper
