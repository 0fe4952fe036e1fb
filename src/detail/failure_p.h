#pragma once

// How the view models of this folder read a caught exception. Not part of the public interface.

#include "apierror.h"

#include <QCoroTask>
#include <QString>
#include <exception>
#include <optional>

namespace kestrine::detail {

/// A failed request as a view model sees it: either a cancellation (the work was abandoned and
/// nobody is waiting for it: never shown, never logged) or a text to show.
struct Failure
{
    bool isCancellation = false;
    std::optional<APIError::Kind> apiErrorKind;
    /// The localized description that screens show.
    QString description;

    bool isMergeConflict() const { return apiErrorKind == APIError::Kind::MergeConflict; }

    static Failure of(const std::exception_ptr &error);
};

/// Awaits `task` and hands back its failure instead of throwing it; nothing when it succeeded.
QCoro::Task<std::optional<Failure>> attempt(QCoro::Task<> task);

} // namespace kestrine::detail
