// The inbox search: which rows the words typed into the search field find, in the title, the
// repository's full name and the number, without regard to case or accents.

#include "inboxsearch.h"

#include <QtTest>

using namespace kestrine;

namespace {

PRRow row(const QString &fullName, qint64 number, const QString &title)
{
    PRRow r;
    r.repo.fullName = fullName;
    r.repo.name = fullName.section(u'/', 1);
    r.pr.number = number;
    r.pr.title = title;
    return r;
}

bool finds(const QString &query, const PRRow &r)
{
    return InboxSearch(query).matches(r);
}

} // namespace

class TestInboxSearch : public QObject
{
    Q_OBJECT

private slots:
    void titleWordsAreFoundInAnyCase()
    {
        const PRRow r = row(QStringLiteral("team/app"), 42, QStringLiteral("Fix the Login page"));
        QVERIFY(finds(QStringLiteral("login"), r));
        QVERIFY(finds(QStringLiteral("LOGIN"), r));
        QVERIFY(finds(QStringLiteral("gin pa"), r));
        QVERIFY(!finds(QStringLiteral("logout"), r));
    }

    void repositoryFullNameIsSearched()
    {
        const PRRow r = row(QStringLiteral("Team/Mobile-App"), 7, QStringLiteral("Bump deps"));
        QVERIFY(finds(QStringLiteral("mobile"), r));
        QVERIFY(finds(QStringLiteral("team/mobile-app"), r));
        QVERIFY(finds(QStringLiteral("m/mob"), r));
        QVERIFY(!finds(QStringLiteral("desktop"), r));
    }

    void numberIsFoundWithAndWithoutItsHash()
    {
        const PRRow r = row(QStringLiteral("team/app"), 42, QStringLiteral("Fix the login page"));
        QVERIFY(finds(QStringLiteral("#42"), r));
        QVERIFY(finds(QStringLiteral("42"), r));
        // As typed, a key at a time: "#4" is on the way to "#42".
        QVERIFY(finds(QStringLiteral("#4"), r));
        QVERIFY(!finds(QStringLiteral("#2"), r));
        QVERIFY(!finds(QStringLiteral("#421"), r));
        QVERIFY(!finds(QStringLiteral("#43"), r));
        // The repository and the number are apart: the row's id is not one word to search in.
        QVERIFY(!finds(QStringLiteral("app#42"), r));
    }

    void everyWordMustBeFoundEachInAnyField()
    {
        const PRRow r = row(QStringLiteral("team/app"), 42, QStringLiteral("Fix the login page"));
        QVERIFY(finds(QStringLiteral("login app #42"), r));
        QVERIFY(finds(QStringLiteral("#42 team fix"), r));
        QVERIFY(finds(QStringLiteral("page login"), r));
        QVERIFY(!finds(QStringLiteral("login other"), r));
        QVERIFY(!finds(QStringLiteral("login #43"), r));
    }

    void aWordIsNotFoundAcrossTwoFields()
    {
        // "page" ends the title and "team" starts the repository: "pageteam" is in neither.
        const PRRow r = row(QStringLiteral("team/app"), 42, QStringLiteral("Fix the login page"));
        QVERIFY(!finds(QStringLiteral("pageteam"), r));
        QVERIFY(!finds(QStringLiteral("app#4"), r));
    }

    void accentsAreIgnoredBothWays()
    {
        const PRRow accented =
            row(QStringLiteral("équipe/café"), 5, QStringLiteral("Crème brûlée"));
        QVERIFY(finds(QStringLiteral("cafe"), accented));
        QVERIFY(finds(QStringLiteral("equipe"), accented));
        QVERIFY(finds(QStringLiteral("creme brulee"), accented));
        QVERIFY(finds(QStringLiteral("CRÈME"), accented));
        const PRRow plain = row(QStringLiteral("team/cafe"), 6, QStringLiteral("Creme brulee"));
        QVERIFY(finds(QStringLiteral("Café"), plain));
        QVERIFY(finds(QStringLiteral("crème BRÛLÉE"), plain));
        // Decomposed as some keyboards send it: e and a combining acute accent.
        QVERIFY(finds(QStringLiteral("cafe\u0301"), plain));
        QVERIFY(finds(QStringLiteral("cafe"),
                      row(QStringLiteral("a/b"), 1, QStringLiteral("cafe\u0301"))));
        QVERIFY(!finds(QStringLiteral("cafes"), plain));
    }

    void otherScriptsFoldTheirCaseAndAccentsToo()
    {
        const PRRow r =
            row(QStringLiteral("team/app"), 3, QStringLiteral("Ελληνικά: Άλφα ΣΊΓΜΑ, İstanbul"));
        QVERIFY(finds(QStringLiteral("αλφα"), r));
        QVERIFY(finds(QStringLiteral("σιγμα"), r));
        QVERIFY(finds(QStringLiteral("istanbul"), r));
    }

    void invisibleFormatCharactersDoNotSplitAWord()
    {
        const PRRow r = row(QStringLiteral("team/app"), 9, QStringLiteral("Re\u200Bfactor"));
        QVERIFY(finds(QStringLiteral("refactor"), r));
        QVERIFY(finds(QStringLiteral("re\u2069factor"),
                      row(QStringLiteral("a/b"), 1, QStringLiteral("Refactor"))));
    }

    void blankQueriesMatchEveryRow()
    {
        const PRRow r = row(QStringLiteral("team/app"), 42, QStringLiteral("Fix the login page"));
        for (const QString &blank : {QString(), QStringLiteral(""), QStringLiteral("   "),
                                     QStringLiteral("\t\n"), QStringLiteral("\u00a0\u3000")}) {
            const InboxSearch search(blank);
            QVERIFY(search.isEmpty());
            QVERIFY(search.matches(r));
            QVERIFY(search.matches(PRRow{}));
        }
        // A word of nothing but a combining mark leaves nothing to look for.
        QVERIFY(InboxSearch(QStringLiteral(" \u0301 ")).isEmpty());
    }

    void wordsStandApartByAnyWhiteSpace()
    {
        QCOMPARE(
            InboxSearch(QStringLiteral("  Login\tPAGE\u00a0Café \n")).words(),
            (QStringList{QStringLiteral("login"), QStringLiteral("page"), QStringLiteral("cafe")}));
        QCOMPARE(InboxSearch(QStringLiteral("Login page")),
                 InboxSearch(QStringLiteral("login  page ")));
        QVERIFY(InboxSearch(QStringLiteral("login")) != InboxSearch(QStringLiteral("logi")));
    }

    void foldingTakesCaseMarksAndFormatCharactersOff()
    {
        QCOMPARE(foldForSearch(u"Crème Brûlée"), QStringLiteral("creme brulee"));
        QCOMPARE(foldForSearch(u"ÅNGSTRÖM"), QStringLiteral("angstrom"));
        QCOMPARE(foldForSearch(u"a\u200Db\u00ADc"), QStringLiteral("abc"));
        // Letters that are not an accent on a base letter stay what they are.
        QCOMPARE(foldForSearch(u"Ørsted Łódź"), QStringLiteral("ørsted łodz"));
    }

    void searchableTextHoldsTheThreeFieldsOnLinesOfTheirOwn()
    {
        QCOMPARE(InboxSearch::searchableText(
                     row(QStringLiteral("Team/Café"), 42, QStringLiteral("Fix Login"))),
                 QStringLiteral("fix login\nteam/cafe\n#42"));
    }
};

QTEST_APPLESS_MAIN(TestInboxSearch)
#include "tst_inboxsearch.moc"
