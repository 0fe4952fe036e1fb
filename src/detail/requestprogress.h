#pragma once

#include "apierror.h"
#include "giteaclient.h"
#include "notconfigured.h"

#include <QCoroTask>
#include <QPointer>
#include <QString>
#include <exception>
#include <optional>

namespace kestrine {

/// The loading flag and error text of a screen that shows the answer to one request (a diff, a
/// job log), and the way that request is made. `Model` derives from this and declares the
/// isLoadingChanged() and errorMessageChanged() signals its properties notify with.
template <class Model>
class RequestProgress
{
public:
    bool isLoading() const { return m_isLoading; }
    const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    /// "" when there is no error, for QML.
    QString qmlErrorMessage() const { return m_errorMessage.value_or(QString()); }

protected:
    RequestProgress() = default;

    void setLoading(bool loading)
    {
        if (m_isLoading == loading)
            return;
        m_isLoading = loading;
        emit model()->isLoadingChanged();
    }

    void setErrorMessage(const std::optional<QString> &message)
    {
        if (m_errorMessage == message)
            return;
        m_errorMessage = message;
        emit model()->errorMessageChanged();
    }

    /// Makes the request `ask` builds from a client of `configured`, cancelled when the model
    /// goes: loading while it runs, the previous error cleared. Gives the answer, with loading
    /// still on for the caller to finish what it does with it. Gives nothing when there is no
    /// answer: then the error is shown ("Not configured." without a client, the failure's text,
    /// nothing for a cancellation), loading is off, and if the model went meanwhile nothing of
    /// it may be touched.
    template <class T, class Ask>
    QCoro::Task<std::optional<T>> answerOf(const std::optional<GiteaClient> &configured, Ask ask)
    {
        setLoading(true);
        setErrorMessage(std::nullopt);
        if (!configured) {
            setErrorMessage(notConfiguredMessage());
            setLoading(false);
            co_return std::nullopt;
        }
        const QPointer<Model> self(model());
        std::optional<T> answer;
        std::exception_ptr error;
        try {
            answer = co_await ask(configured->cancelledWith(model()));
        } catch (...) {
            error = std::current_exception();
        }
        if (!self)
            co_return std::nullopt;
        if (error) {
            if (!isCancellation(error))
                setErrorMessage(localizedErrorDescription(error));
            setLoading(false);
        }
        co_return answer;
    }

private:
    Model *model() { return static_cast<Model *>(this); }

    bool m_isLoading = false;
    std::optional<QString> m_errorMessage;
};

} // namespace kestrine
