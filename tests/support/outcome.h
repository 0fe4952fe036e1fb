#pragma once

#include "apierror.h"

#include <QByteArray>
#include <QCoroTask>
#include <exception>
#include <optional>

namespace kestrine::testing {

/// What a coroutine ended with: its value or the exception it threw.
template <class T>
struct Outcome
{
    std::optional<T> value;
    std::exception_ptr error;

    /// The thrown exception if it is an `E`, else null.
    template <class E>
    std::optional<E> errorAs() const
    {
        if (!error)
            return std::nullopt;
        try {
            std::rethrow_exception(error);
        } catch (const E &e) {
            return e;
        } catch (...) {
        }
        return std::nullopt;
    }
};

/// What went wrong, for a test's failure message; "none" when nothing did.
template <class T>
QByteArray failureOf(const Outcome<T> &outcome)
{
    return outcome.error ? errorDescription(outcome.error).toUtf8() : QByteArray("none");
}

/// A task without a value either completes or throws.
struct Completion
{};

template <class T>
QCoro::Task<Outcome<T>> capture(QCoro::Task<T> task)
{
    Outcome<T> outcome;
    try {
        outcome.value = co_await std::move(task);
    } catch (...) {
        outcome.error = std::current_exception();
    }
    co_return outcome;
}

inline QCoro::Task<Outcome<Completion>> capture(QCoro::Task<> task)
{
    Outcome<Completion> outcome;
    try {
        co_await std::move(task);
        outcome.value = Completion{};
    } catch (...) {
        outcome.error = std::current_exception();
    }
    co_return outcome;
}

/// Runs `task` to its end in a nested event loop. Unlike QCoro::waitFor, a task that throws
/// does not leave the loop running forever.
template <class T>
Outcome<T> runToEnd(QCoro::Task<T> task)
{
    return QCoro::waitFor(capture(std::move(task)));
}

inline Outcome<Completion> runToEnd(QCoro::Task<> task)
{
    return QCoro::waitFor(capture(std::move(task)));
}

} // namespace kestrine::testing
