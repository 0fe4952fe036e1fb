#pragma once

#include "backgroundcheck.h"

#include <QCoroTask>
#include <QString>
#include <memory>
#include <optional>

namespace kestrine::cli {

/// What one run of kestrine-cli sets up around its command: where the instance URL and the token
/// come from (the keychain, or KESTRINE_URL and KESTRINE_TOKEN for this run only), and the
/// background check that the command's models may start, which the run waits for before it ends.
class Session
{
public:
    Session();
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Loads the shared settings and applies this run's credentials. Answers the error text when
    /// the run cannot go on.
    std::optional<QString> open();

    /// The background check of this run; open() installs it.
    BackgroundCheck &backgroundCheck();

    /// Waits for what the command left running (see BackgroundCheck::settle()).
    QCoro::Task<> finish();

private:
    std::unique_ptr<BackgroundCheck> m_check;
};

} // namespace kestrine::cli
