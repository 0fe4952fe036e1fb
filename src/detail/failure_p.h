#pragma once

// How the view models of this folder read a caught exception. Not part of the public interface.

#include "apierror.h"

#include <QCoroTask>
#include <QString>
#include <exception>
#include <optional>
#include <type_traits>

namespace kestrine::detail {

/// A failed request as a view model sees it: either a cancellation (the work was abandoned and
/// nobody is waiting for it: never shown, never logged) or a text to show.
struct Failure
{
    bool isCancellation = false;
    std::optional<APIError::Kind> apiErrorKind;
    /// The localized description that screens show.
    QString description;
    /// The same in English, for the log.
    QString logDescription;

    bool isMergeConflict() const { return apiErrorKind == APIError::Kind::MergeConflict; }

    static Failure of(const std::exception_ptr &error);
};

/// Awaits `task` and hands back its failure instead of throwing it; nothing when it succeeded.
QCoro::Task<std::optional<Failure>> attempt(QCoro::Task<> task);

/// What a request with an answer ended in: exactly one of the answer and the failure is set.
template <class T>
struct Attempted
{
    std::optional<T> value;
    std::optional<Failure> failure;
};

/// Awaits `task` and hands back its answer or, instead of throwing it, its failure.
template <class T>
requires(!std::is_void_v<T>) QCoro::Task<Attempted<T>> attempt(QCoro::Task<T> task)
{
    // The answer is assigned in a statement of its own: g++ 12 mishandles a co_await inside a
    // braced initializer.
    std::optional<T> value;
    std::exception_ptr error;
    try {
        value = co_await std::move(task);
    } catch (...) {
        error = std::current_exception();
    }
    if (error)
        co_return Attempted<T>{std::nullopt, Failure::of(error)};
    co_return Attempted<T>{std::move(value), std::nullopt};
}

} // namespace kestrine::detail
