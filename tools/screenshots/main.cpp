// Renders every scene of the app against the built-in demo instance, one PNG each, and then the
// same screens with texts a stranger wrote.
//
//   kestrine-screenshots <output folder> [scene name...]
//
// The theme comes from the environment (QT_QUICK_CONTROLS_MATERIAL_THEME=Light or Dark); the
// window is a real one, so run it under a display (make screenshots uses xvfb-run) to get the
// Material shadows that the offscreen platform does not draw. Scenes named on the command line
// are the only ones saved. Each scene's name is printed as its file is written.
//
// Exits with 1 when the tour went wrong, when a message said that something on screen is broken
// (an icon that does not decode, a TypeError, a binding loop...), or when anything contacted the
// host that the stranger's texts point at: those screenshots would show a broken app.

#include "app.h"
#include "screenwarnings.h"
#include "strangerhost.h"
#include "tour.h"

#include <QCoroTask>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTimer>
#include <cstdio>

using namespace kestrine;

namespace {

/// Whether the tour went as it should; says on standard error what did not.
bool reportProblems(const Tour &tour, const testing::StrangerHost &stranger)
{
    QStringList problems = tour.failures();
    for (const QString &message : ui::BrokenScreenMessages::collected())
        problems.append(QStringLiteral("broken screen: ") + message);
    for (const QString &request : stranger.requestLines())
        problems.append(QStringLiteral("the stranger's host was asked for: ") + request);
    if (stranger.contacts() > stranger.requestLines().size())
        problems.append(QStringLiteral("the stranger's host was contacted"));
    for (const QString &problem : problems)
        std::fprintf(stderr, "kestrine-screenshots: %s\n", qPrintable(problem));
    return problems.isEmpty() && !tour.scenes().isEmpty();
}

} // namespace

int main(int argc, char *argv[])
{
    prepareApplication();
    QGuiApplication application(argc, argv);
    ui::BrokenScreenMessages::install();
    const QStringList args = application.arguments().mid(1);
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: kestrine-screenshots <output folder> [scene...]\n");
        return 2;
    }
    if (!QDir().mkpath(args.first())) {
        std::fprintf(stderr, "kestrine-screenshots: cannot create %s\n", qPrintable(args.first()));
        return 1;
    }

    testing::StrangerHost stranger;
    if (!stranger.listen()) {
        std::fprintf(stderr, "kestrine-screenshots: no port for the stranger's host\n");
        return 1;
    }
    KestrineApp app(Tour::appOptions());
    // The tour drives the app from outside; it may wait here for the app to be up.
    if (!QCoro::waitFor(app.start())) {
        std::fprintf(stderr, "kestrine-screenshots: %s\n", qPrintable(app.errorString()));
        return 1;
    }
    Tour tour(app, args.first(), args.mid(1));
    QTimer::singleShot(0, &application, [&] {
        tour.run(stranger);
        for (const QString &file : tour.writtenFiles())
            std::printf("%s\n", qPrintable(QFileInfo(file).completeBaseName()));
        application.exit(reportProblems(tour, stranger) ? 0 : 1);
    });
    return application.exec();
}
