// The Debian package's metadata against this build, without building the package (`make deb` does
// that): the version, the files debian/kestrine.install ships, the Build-Depends against what
// CMake found, and the Depends against the QML modules and Qt plugins the app loads, which
// dpkg-shlibdeps cannot see. Packages are looked up in the dpkg database of this machine, where
// `make deps` installed what the build uses.

#include "installtools.h"

#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

using namespace kestrine::testing;

namespace {

QString sourcePath(const QString &relative)
{
    return QStringLiteral(KESTRINE_SOURCE_DIR "/") + relative;
}

/// The lines of a list file without comments and blank lines, each up to its first blank.
QStringList listEntries(const QString &path)
{
    QStringList entries;
    for (const QString &line : readText(path).split(u'\n')) {
        const QString entry = line.section(u'#', 0, 0).trimmed().section(u' ', 0, 0);
        if (!entry.isEmpty())
            entries.append(entry);
    }
    return entries;
}

/// The fields of the paragraphs of a Debian control file; continuation lines are joined.
QList<QHash<QString, QString>> controlParagraphs(const QString &text)
{
    QList<QHash<QString, QString>> paragraphs(1);
    QString field;
    for (const QString &line : text.split(u'\n')) {
        if (line.trimmed().isEmpty()) {
            if (!paragraphs.last().isEmpty())
                paragraphs.append(QHash<QString, QString>());
            continue;
        }
        if (line.startsWith(u'#'))
            continue;
        if (line.front().isSpace()) {
            paragraphs.last()[field] += u' ' + line.trimmed();
            continue;
        }
        field = line.section(u':', 0, 0).trimmed();
        paragraphs.last()[field] = line.section(u':', 1).trimmed();
    }
    if (paragraphs.last().isEmpty())
        paragraphs.removeLast();
    return paragraphs;
}

/// The clauses of a relationship field, each the package names of its alternatives:
/// "a (>= 1) [amd64] <!nocheck>, b | c:any" gives {a}, {b, c}. Substitution variables such as
/// ${shlibs:Depends} are left out.
QList<QStringList> relations(const QString &value)
{
    static const QRegularExpression qualifiers(QStringLiteral(R"(\([^)]*\)|\[[^]]*\]|<[^>]*>)"));
    QList<QStringList> clauses;
    for (const QString &clause : value.split(u',')) {
        QStringList names;
        for (QString alternative : clause.split(u'|')) {
            alternative = alternative.remove(qualifiers).section(u':', 0, 0).trimmed();
            if (!alternative.isEmpty() && !alternative.startsWith(u'$'))
                names.append(alternative);
        }
        if (!names.isEmpty())
            clauses.append(names);
    }
    return clauses;
}

QStringList firstAlternatives(const QList<QStringList> &clauses)
{
    QStringList names;
    for (const QStringList &clause : clauses)
        names.append(clause.first());
    return names;
}

/// The installed packages of this machine as dpkg knows them.
class InstalledPackages
{
public:
    InstalledPackages()
    {
        const ToolResult result = runTool(
            QStringLiteral("dpkg-query"),
            {QStringLiteral("-W"), QStringLiteral("-f=${db:Status-Status}\\t${Package}\\t"
                                                  "${Essential}\\t${Priority}\\t${Provides}\\t"
                                                  "${Pre-Depends}, ${Depends}\\n")});
        for (const QString &line : result.output.split(u'\n')) {
            const QStringList fields = line.split(u'\t');
            if (fields.size() != 6 || fields[0] != u"installed")
                continue;
            const QString &name = fields[1];
            dependencies.insert(name, relations(fields[5]));
            if (fields[2] == u"yes" || fields[3] == u"required")
                essential.append(name);
            for (const QStringList &provided : relations(fields[4]))
                providers[provided.first()].append(name);
        }
    }

    bool isEmpty() const { return dependencies.isEmpty(); }

    /// The Essential and required packages: on every Debian system, and in every build chroot.
    QStringList essential;

    /// `roots` and every installed package they reach through Depends and Pre-Depends. Of a clause
    /// "a | b" every installed alternative counts as reached, as any of them can be the one apt
    /// chose.
    QSet<QString> closure(const QStringList &roots) const
    {
        QSet<QString> reached;
        QStringList queue = roots;
        while (!queue.isEmpty()) {
            const QString name = queue.takeLast();
            const QStringList real =
                dependencies.contains(name) ? QStringList{name} : providers.value(name);
            for (const QString &package : real) {
                if (reached.contains(package))
                    continue;
                reached.insert(package);
                for (const QStringList &clause : dependencies.value(package))
                    queue.append(clause);
            }
        }
        return reached;
    }

private:
    QHash<QString, QList<QStringList>> dependencies;
    QHash<QString, QStringList> providers;
};

/// The names dpkg may know `path` by: as given, resolved, and its other name on a merged /usr
/// (dpkg knows many files under /usr/lib as /lib/...).
QStringList dpkgNames(const QString &path)
{
    static const QRegularExpression merged(QStringLiteral("^/usr(/(bin|sbin|lib)/.*)$"));
    QStringList names{path};
    const QString resolved = QFileInfo(path).canonicalFilePath();
    if (!resolved.isEmpty() && resolved != path)
        names.append(resolved);
    for (const QString &name : QStringList(names)) {
        const QRegularExpressionMatch match = merged.match(name);
        if (match.hasMatch())
            names.append(match.captured(1));
    }
    return names;
}

/// The packages that own each of `paths` by dpkg's database (none for a file of no package), in
/// one dpkg-query call.
QHash<QString, QStringList> owners(const QStringList &paths)
{
    QStringList names;
    for (const QString &path : paths)
        names << dpkgNames(path);
    names.removeDuplicates();
    // "pkg1:amd64, pkg2: /path" for each name it knows; diversion lines name no owner.
    QHash<QString, QStringList> byName;
    const ToolResult query =
        runTool(QStringLiteral("dpkg-query"), QStringList{QStringLiteral("-S")} + names);
    for (const QString &line : query.output.split(u'\n')) {
        const qsizetype split = line.indexOf(QStringLiteral(": /"));
        if (split < 0 || line.startsWith(QStringLiteral("diversion ")))
            continue;
        QStringList packages;
        for (const QString &package : line.left(split).split(u','))
            packages.append(package.section(u':', 0, 0).trimmed());
        byName.insert(line.mid(split + 2), packages);
    }
    QHash<QString, QStringList> result;
    for (const QString &path : paths) {
        for (const QString &name : dpkgNames(path)) {
            if (byName.contains(name)) {
                result.insert(path, byName.value(name));
                break;
            }
        }
    }
    return result;
}

/// The QML modules named by `import` lines of the files in `dir` that match `pattern`, besides the
/// app's own.
QStringList qmlImports(const QString &dir, const QString &pattern = QStringLiteral("*.qml"))
{
    static const QRegularExpression importLine(QStringLiteral(R"(^\s*import\s+([A-Za-z][\w.]*))"),
                                               QRegularExpression::MultilineOption);
    QSet<QString> modules;
    for (const QString &file : QDir(dir).entryList({pattern}, QDir::Files)) {
        auto it = importLine.globalMatch(readText(QDir(dir).filePath(file)));
        while (it.hasNext())
            modules.insert(it.next().captured(1));
    }
    modules.remove(QStringLiteral("Kestrine"));
    return modules.values();
}

/// The qmldir files of `modules` and of every module they import or depend on, as the QML engine
/// loads them from Qt's import path (optional imports are left out: the style is chosen apart).
QStringList qmldirFiles(QStringList modules, QStringList *missing)
{
    static const QRegularExpression reference(
        QStringLiteral(R"(^(?:default\s+)?(?:import|depends)\s+(\S+))"),
        QRegularExpression::MultilineOption);
    const QString importPath = QLibraryInfo::path(QLibraryInfo::QmlImportsPath);
    QSet<QString> seen;
    QStringList files;
    while (!modules.isEmpty()) {
        const QString module = modules.takeLast();
        if (seen.contains(module))
            continue;
        seen.insert(module);
        const QString qmldir =
            importPath + u'/' + QString(module).replace(u'.', u'/') + QStringLiteral("/qmldir");
        if (!QFileInfo::exists(qmldir)) {
            missing->append(qmldir);
            continue;
        }
        files.append(qmldir);
        auto it = reference.globalMatch(readText(qmldir));
        while (it.hasNext())
            modules.append(it.next().captured(1));
    }
    return files;
}

/// The Controls style of the app's qtquickcontrols2.conf ("Material").
QString controlsStyle()
{
    bool inControls = false;
    for (const QString &line :
         readText(sourcePath(QStringLiteral("src/app/qtquickcontrols2.conf"))).split(u'\n')) {
        if (line.startsWith(u'['))
            inControls = line.trimmed() == u"[Controls]";
        else if (inControls && line.startsWith(QStringLiteral("Style=")))
            return line.mid(6).trimmed();
    }
    return {};
}

/// Each of `files` whose owners are none of `covered`, with its owners.
QStringList uncovered(const QStringList &files, const QSet<QString> &covered)
{
    const QHash<QString, QStringList> owned = owners(files);
    QStringList result;
    for (const QString &file : files) {
        const QStringList packages = owned.value(file);
        bool met = false;
        for (const QString &package : packages)
            met = met || covered.contains(package);
        if (!met)
            result.append(
                file + QStringLiteral(" (") +
                (packages.isEmpty() ? QStringLiteral("no package") : packages.join(u'/')) + u')');
    }
    return result;
}

} // namespace

class TestDebianPackage : public QObject
{
    Q_OBJECT

private:
    QHash<QString, QString> source;
    QHash<QString, QString> binary;
    InstalledPackages installed;

private slots:
    void initTestCase()
    {
        const QList<QHash<QString, QString>> paragraphs =
            controlParagraphs(readText(sourcePath(QStringLiteral("debian/control"))));
        QCOMPARE(paragraphs.size(), 2);
        source = paragraphs[0];
        binary = paragraphs[1];
        QCOMPARE(source.value(QStringLiteral("Source")), QStringLiteral("kestrine"));
        QCOMPARE(binary.value(QStringLiteral("Package")), QStringLiteral("kestrine"));
        QVERIFY2(!installed.isEmpty(), "dpkg-query lists no installed package");
    }

    void versionIsTheProjectVersion()
    {
        // A native package: its version is the project's, with no Debian revision.
        const QString changelog = readText(sourcePath(QStringLiteral("debian/changelog")));
        static const QRegularExpression head(QStringLiteral(R"(^kestrine \(([^)]+)\) )"));
        const QRegularExpressionMatch match = head.match(changelog);
        QVERIFY2(match.hasMatch(), qPrintable(changelog.section(u'\n', 0, 0)));
        QCOMPARE(match.captured(1), QStringLiteral(KESTRINE_VERSION));
        QCOMPARE(readText(sourcePath(QStringLiteral("debian/source/format"))).trimmed(),
                 QStringLiteral("3.0 (native)"));
    }

    void shipsEveryFileInstallInstalls()
    {
        // The package build installs like this into debian/tmp; dh_missing fails it on any file
        // there that debian/kestrine.install does not name, and dh_install on any name that
        // matches no file. Both sides are exact paths here.
        QTemporaryDir staging;
        const QStringList files = installInto(staging.path(), QStringLiteral("/usr"));
        QVERIFY(!files.isEmpty());

        const QStringList shipped =
            listEntries(sourcePath(QStringLiteral("debian/kestrine.install")));

        const QSet<QString> installedFiles(files.cbegin(), files.cend());
        const QSet<QString> named(shipped.cbegin(), shipped.cend());
        QStringList notNamed = (installedFiles - named).values();
        QStringList notInstalled = (named - installedFiles).values();
        notNamed.sort();
        notInstalled.sort();
        QVERIFY2(notNamed.isEmpty(),
                 qPrintable(QStringLiteral("installed, not in debian/kestrine.install: ") +
                            notNamed.join(u' ')));
        QVERIFY2(notInstalled.isEmpty(),
                 qPrintable(QStringLiteral("in debian/kestrine.install, not installed: ") +
                            notInstalled.join(u' ')));
        QCOMPARE(shipped.size(), named.size());
    }

    void buildDependsAreInstalledByMakeDeb()
    {
        // `make deb` installs the packages of both lists before it builds: every build
        // dependency but debhelper-compat (debhelper's, listed by its name) is in one of them.
        const QStringList listed =
            listEntries(sourcePath(QStringLiteral("tools/debian-packages.txt"))) +
            listEntries(sourcePath(QStringLiteral("tools/deb-packages.txt")));
        QStringList unlisted;
        for (const QString &package :
             firstAlternatives(relations(source.value(QStringLiteral("Build-Depends"))))) {
            if (package != u"debhelper-compat" && !listed.contains(package))
                unlisted.append(package);
        }
        QVERIFY2(unlisted.isEmpty(), qPrintable(unlisted.join(u' ')));
    }

    void buildDependsCoverWhatCMakeFound()
    {
        // What the configure step of this build found: the CMake package of every find_package
        // (Qt's modules and tools, QCoro, QtKeychain, ...), the build tool and cmake itself. A
        // build chroot holds the Build-Depends, build-essential and the Essential packages, with
        // what they depend on.
        const QString cache = readText(QStringLiteral(KESTRINE_BUILD_DIR "/CMakeCache.txt"));
        QVERIFY(!cache.isEmpty());
        static const QRegularExpression packageDir(QStringLiteral(R"(^(\w+)_DIR:PATH=(/.+)$)"),
                                                   QRegularExpression::MultilineOption);
        static const QRegularExpression tool(
            QStringLiteral(R"(^(?:CMAKE_MAKE_PROGRAM|CMAKE_COMMAND):\w+=(/.+)$)"),
            QRegularExpression::MultilineOption);
        QStringList files;
        auto dirs = packageDir.globalMatch(cache);
        while (dirs.hasNext()) {
            // <Package>_DIR is where find_package found <Package>Config.cmake; other entries
            // ending in _DIR (OPENGL_INCLUDE_DIR, ...) hold no such file.
            const QRegularExpressionMatch match = dirs.next();
            const QString name = match.captured(1);
            const QDir dir(match.captured(2));
            const QStringList configs =
                dir.entryList({name + QStringLiteral("Config.cmake"),
                               name.toLower() + QStringLiteral("-config.cmake")},
                              QDir::Files);
            if (!configs.isEmpty())
                files.append(dir.filePath(configs.first()));
        }
        auto tools = tool.globalMatch(cache);
        while (tools.hasNext())
            files.append(tools.next().captured(1));
        QVERIFY2(files.size() > 10, qPrintable(files.join(u' ')));

        QStringList roots =
            firstAlternatives(relations(source.value(QStringLiteral("Build-Depends"))));
        roots << QStringLiteral("build-essential") << installed.essential;
        const QStringList missing = uncovered(files, installed.closure(roots));

        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("not from the Build-Depends: ") +
                                               missing.join(QStringLiteral(", "))));
    }

    void dependsCoverWhatTheAppLoadsAtRunTime()
    {
        // dpkg-shlibdeps finds the libraries the programs link (${shlibs:Depends}, here the
        // owners of what ldd lists). What Qt loads by name at run time it cannot see: the QML
        // modules the screens import and the Controls style, with the modules they import in
        // turn; where the platform has no file dialog, the QML one of Qt Quick Dialogs and what
        // it imports; the SVG image plugin that draws the icons; the X11 platform plugin; and
        // libsecret, which QtKeychain opens for the Secret Service. The fonts are checked by
        // tracing the packaged app (tools/check-runtime-packages --deb), as Qt picks them by
        // family.
        QStringList files;
        QStringList missingModules;
        const QString ui = sourcePath(QStringLiteral("src/ui"));
        QStringList modules = qmlImports(ui);
        QVERIFY(modules.contains(QStringLiteral("QtQuick.Controls")));
        const QString style = controlsStyle();
        QCOMPARE(style, QStringLiteral("Material"));
        modules.append(QStringLiteral("QtQuick.Controls.") + style);
        QVERIFY(readText(ui + QStringLiteral("/ShareSheet.qml"))
                    .contains(QStringLiteral("FileDialog {")));
        const QString dialogs = QLibraryInfo::path(QLibraryInfo::QmlImportsPath) +
                                QStringLiteral("/QtQuick/Dialogs/quickimpl/qml/+") + style;
        QVERIFY2(QFileInfo::exists(dialogs + QStringLiteral("/FileDialog.qml")),
                 qPrintable(dialogs));
        modules << qmlImports(dialogs, QStringLiteral("FileDialog.qml"));
        files << qmldirFiles(modules, &missingModules);
        QVERIFY2(missingModules.isEmpty(), qPrintable(missingModules.join(u' ')));

        QVERIFY(!QDir(sourcePath(QStringLiteral("src/ui/icons")))
                     .entryList({QStringLiteral("*.svg")}, QDir::Files)
                     .isEmpty());
        const QString plugins = QLibraryInfo::path(QLibraryInfo::PluginsPath);
        files << plugins + QStringLiteral("/imageformats/libqsvg.so")
              << plugins + QStringLiteral("/platforms/libqxcb.so")
              << QLibraryInfo::path(QLibraryInfo::LibrariesPath) +
                     QStringLiteral("/libsecret-1.so.0");
        for (const QString &file : files)
            QVERIFY2(QFileInfo::exists(file), qPrintable(file));

        QStringList roots = firstAlternatives(relations(binary.value(QStringLiteral("Depends"))));
        static const QRegularExpression linked(QStringLiteral(R"(=> (/\S+))"));
        QStringList libraries;
        for (const QString &program :
             {QStringLiteral(KESTRINE_APP_PATH), QStringLiteral(KESTRINE_CLI_PATH)}) {
            const ToolResult ldd = runTool(QStringLiteral("ldd"), {program});
            QCOMPARE(ldd.exitCode, 0);
            auto it = linked.globalMatch(ldd.output);
            while (it.hasNext())
                libraries << it.next().captured(1);
        }
        for (const QStringList &packages : owners(libraries))
            roots << packages;
        roots << installed.essential;
        const QStringList missing = uncovered(files, installed.closure(roots));

        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("not from the Depends: ") +
                                               missing.join(QStringLiteral(", "))));
    }
};

QTEST_GUILESS_MAIN(TestDebianPackage)
#include "tst_debianpackage.moc"
