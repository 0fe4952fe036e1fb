// Every scene of the app, as `make screenshots` walks them (tools/screenshots/tour.cpp): the demo
// instance's screens and states, then the same screens with texts a stranger wrote. The app runs
// as it does for a user, in demo mode; the tour fails on any message that means something on
// screen is broken, and in each scene every image must have loaded from the app itself and every
// text that holds markup must be drawn as text.

#include "app.h"
#include "outcome.h"
#include "screenwarnings.h"
#include "strangerhost.h"
#include "tour.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <memory>

using namespace kestrine;
using kestrine::testing::runToEnd;

namespace {

enum TextFormat { PlainText = 0, RichText = 1 };

void collectItems(QQuickItem *item, QList<QQuickItem *> &items)
{
    items.append(item);
    for (QQuickItem *child : item->childItems())
        collectItems(child, items);
}

/// What is wrong with what `window` shows: an image that did not load or does not come from the
/// app, a text with markup that is not drawn as text.
QStringList problemsOnScreen(QQuickWindow *window)
{
    QList<QQuickItem *> items;
    collectItems(window->contentItem(), items);
    QStringList problems;
    for (QQuickItem *item : std::as_const(items)) {
        if (!item->isVisible())
            continue;
        if (item->inherits("QQuickImageBase")) {
            const QUrl source = item->property("source").toUrl();
            if (source.isEmpty())
                continue;
            if (source.scheme() != u"qrc")
                problems.append(QStringLiteral("an image from ") + source.toString());
            else if (item->property("status").toInt() != 1 /* Ready */)
                problems.append(QStringLiteral("an image that did not load: ") + source.toString());
        }
        if (item->inherits("QQuickText") || item->inherits("QQuickTextEdit")) {
            const QString text = item->property("text").toString();
            if (!text.contains(u'<') && !text.contains(u'&'))
                continue;
            const int format = item->property("textFormat").toInt();
            // A Markdown line's rich text is written by the app from the parsed line.
            const bool markdownLine = item->property("markdown").isValid() && format == RichText;
            if (format != PlainText && !markdownLine)
                problems.append(QStringLiteral("markup drawn as markup: ") + text.left(120));
        }
    }
    return problems;
}

} // namespace

class TestScenes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ui::BrokenScreenMessages::install();
        QVERIFY(m_stranger.listen());
        m_app = std::make_unique<KestrineApp>(Tour::appOptions());
        QVERIFY2(runToEnd(m_app->start()).value.value_or(false), qPrintable(m_app->errorString()));
        QVERIFY(QTest::qWaitForWindowExposed(m_app->window()));
    }

    void everySceneShowsWithoutABrokenScreenAndFetchesNothing()
    {
        Tour tour(*m_app);
        QStringList problems;
        tour.onScene([&problems](const QString &scene, QQuickWindow *window) {
            for (const QString &problem : problemsOnScreen(window))
                problems.append(scene + QStringLiteral(": ") + problem);
        });
        tour.run(m_stranger);

        QVERIFY2(tour.failures().isEmpty(), qPrintable(tour.failures().join(u'\n')));
        const QStringList broken = ui::BrokenScreenMessages::collected();
        QVERIFY2(broken.isEmpty(), qPrintable(broken.join(u'\n')));
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
        QVERIFY2(m_stranger.contacts() == 0, qPrintable(m_stranger.requestLines().join(u'\n')));

        const QStringList scenes = tour.scenes();
        QVERIFY2(scenes.size() >= 60, qPrintable(QString::number(scenes.size())));
        QVERIFY(scenes.contains(QStringLiteral("inbox")));
        QVERIFY(scenes.contains(QStringLiteral("inbox-search-no-matches")));
        QVERIFY(scenes.contains(QStringLiteral("detail-checks-failing")));
        QVERIFY(scenes.contains(QStringLiteral("hostile-detail-overview")));
        QVERIFY(scenes.contains(QStringLiteral("hostile-logs")));
        QVERIFY(tour.writtenFiles().isEmpty());
    }

    void cleanupTestCase() { m_app.reset(); }

private:
    testing::StrangerHost m_stranger;
    std::unique_ptr<KestrineApp> m_app;
};

int main(int argc, char *argv[])
{
    prepareApplication();
    QGuiApplication application(argc, argv);
    TestScenes test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_scenes.moc"
