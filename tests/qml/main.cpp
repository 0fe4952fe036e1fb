// The screens' tests: Qt Quick Test files (tst_*.qml) run against the app's QML module, offscreen,
// with the simulated Gitea of tests/data/gitea/seed.json as `gitea`.
//
// A message that means something on screen is broken (an image that does not decode, a TypeError,
// a binding loop...) fails the file even when every test function passed: CTest matches the test
// log against the build's pattern of such messages (tests/qml/CMakeLists.txt).
//
// Storage: with KESTRINE_TEST_KEYCHAIN=1 (tests registered with KEYRING) the app's stores are the
// real ones of run-isolated's private home and keyring; otherwise the process uses the app's
// ephemeral storage, as the demo does, and needs no session bus.

#include "qmlservices.h"
#include "storagemode.h"
#include "testgitea.h"
#include "translations.h"

#include <QCoreApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QtQml/qqmlextensionplugin.h>
#include <QtQuickTest>

Q_IMPORT_QML_PLUGIN(KestrinePlugin)

class Setup : public QObject
{
    Q_OBJECT

public slots:
    void applicationAvailable()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("norrum"));
        QCoreApplication::setApplicationName(QStringLiteral("kestrine"));
        QCoreApplication::setOrganizationDomain(QStringLiteral("norrum.com"));
        QQuickStyle::setStyle(QStringLiteral("Material"));
        // In the language run-isolated gives the test: English unless its LOCALE names another.
        kestrine::i18n::installTranslations();
        if (qEnvironmentVariableIntValue("KESTRINE_TEST_KEYCHAIN") != 1 &&
            !kestrine::Storage::useEphemeral())
            qFatal("The tests' private storage could not be set up.");
        m_gitea = new kestrine::testing::TestGitea(this);
        if (!m_gitea->start())
            qFatal("The simulated Gitea did not start.");
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine->rootContext()->setContextProperty(QStringLiteral("gitea"), m_gitea);
        // As the app does with the log and the settings it made.
        kestrine::QmlServices::install(*engine, m_gitea->stores().settings, m_gitea->stores().log);
    }

private:
    kestrine::testing::TestGitea *m_gitea = nullptr;
};

QUICK_TEST_MAIN_WITH_SETUP(kestrine_screens, Setup)

#include "main.moc"
