#include "failure_p.h"

namespace kestrine::detail {
namespace {

std::optional<APIError::Kind> kindOf(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const APIError &apiError) {
        return apiError.kind();
    } catch (...) {
    }
    return std::nullopt;
}

} // namespace

Failure Failure::of(const std::exception_ptr &error)
{
    return {kestrine::isCancellation(error), kindOf(error), localizedErrorDescription(error),
            errorDescription(error)};
}

QCoro::Task<std::optional<Failure>> attempt(QCoro::Task<> task)
{
    std::exception_ptr error;
    try {
        co_await std::move(task);
    } catch (...) {
        error = std::current_exception();
    }
    if (!error)
        co_return std::nullopt;
    co_return Failure::of(error);
}

} // namespace kestrine::detail
