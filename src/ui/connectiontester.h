#pragma once

#include "qmlservices.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The settings screen's "Test connection": asks the instance who the typed token belongs to,
/// with the values as typed, without saving anything.
class ConnectionTester : public QObject, public SettingsUser
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(bool testing READ testing NOTIFY testingChanged)
    /// A result is shown: success or failure.
    Q_PROPERTY(bool hasResult READ hasResult NOTIFY resultChanged)
    Q_PROPERTY(bool succeeded READ succeeded NOTIFY resultChanged)
    /// The signed-in login after a success; the failure's text after a failure.
    Q_PROPERTY(QString resultText READ resultText NOTIFY resultChanged)

public:
    /// For QML; the log its requests write to is that of its engine's settings.
    explicit ConnectionTester(QObject *parent = nullptr);
    /// Its requests write to the log of `settings`.
    explicit ConnectionTester(SettingsStore &settings, QObject *parent = nullptr);

    bool testing() const { return m_testing; }
    bool hasResult() const { return m_hasResult; }
    bool succeeded() const { return m_succeeded; }
    const QString &resultText() const { return m_resultText; }

    /// Starts a test; a test already under way is abandoned for the new one.
    Q_INVOKABLE void test(const QString &instanceURL, const QString &token);
    /// Forgets the shown result.
    Q_INVOKABLE void clearResult();

    /// The test itself, for callers that wait for it.
    QCoro::Task<> run(QString instanceURL, QString token);

signals:
    void testingChanged();
    void resultChanged();

private:
    void setTesting(bool testing);
    void setResult(bool hasResult, bool succeeded, const QString &text);

    bool m_testing = false;
    bool m_hasResult = false;
    bool m_succeeded = false;
    QString m_resultText;
    // Each test gets a scope object; starting another deletes it, which cancels its request.
    QObject *m_scope = nullptr;
};

} // namespace kestrine::ui
