// The comment sheet's character count: characters as a person sees them (extended grapheme
// clusters), not UTF-16 units or code points.

#include "characters.h"

#include <QtTest>

using kestrine::ui::Characters;

class TestCharacters : public QObject
{
    Q_OBJECT

private slots:
    void countsWhatAPersonSeesAsOneCharacterOnce_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("codePoints");
        QTest::addColumn<int>("characters");
        // codePoints: what a count of code points would say, to show that each case is one that
        // such a count gets wrong (or, for plain text, right).
        QTest::newRow("empty") << QString() << 0 << 0;
        QTest::newRow("plain text") << QStringLiteral("Ship it") << 7 << 7;
        QTest::newRow("thumbs up with a skin tone")
            << QStringLiteral("\U0001F44D\U0001F3FD") << 2 << 1;
        QTest::newRow("e with a combining acute accent") << QStringLiteral("e\u0301") << 2 << 1;
        QTest::newRow("flag of two regional indicators")
            << QStringLiteral("\U0001F1E9\U0001F1EA") << 2 << 1;
        QTest::newRow("two flags side by side")
            << QStringLiteral("\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7") << 4 << 2;
        QTest::newRow("carriage return and line feed") << QStringLiteral("\r\n") << 2 << 1;
        QTest::newRow("family joined by zero-width joiners")
            << QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466") << 7
            << 1;
        QTest::newRow("a character outside the basic plane")
            << QStringLiteral("\U0001D11E") << 1 << 1;
        QTest::newRow("only blanks and line breaks") << QStringLiteral("  \n\t \n ") << 7 << 7;
        QTest::newRow("two line feeds") << QStringLiteral("\n\n") << 2 << 2;
        QTest::newRow("a sentence mixing them")
            << QStringLiteral("Cafe\u0301 \U0001F44D\U0001F3FD\r\n\U0001F1E9\U0001F1EA!") << 13
            << 9;
    }

    void countsWhatAPersonSeesAsOneCharacterOnce()
    {
        QFETCH(QString, text);
        QFETCH(int, codePoints);
        QFETCH(int, characters);
        QCOMPARE(text.toUcs4().size(), codePoints);
        const Characters counter;
        QCOMPARE(counter.count(text), characters);
    }
};

QTEST_GUILESS_MAIN(TestCharacters)
#include "tst_characters.moc"
