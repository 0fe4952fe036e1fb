#include "translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <array>

namespace kestrine::i18n {
namespace {

/// Where the build puts the compiled catalogues (i18n/kestrine_*.ts) among the resources.
const QString catalogueFolder = QStringLiteral(":/i18n");
const QString catalogueName = QStringLiteral("kestrine");
/// The object name of the installed catalogue, by which a second call finds it.
const QString installedName = QStringLiteral("kestrine-catalogue");

/// The contexts of Qt's network stack. Its messages ("Connection refused", "Host … not found")
/// become the failure texts of requests, which the view models also write to the diagnostic log;
/// the log stays English, so Qt's catalogue does not translate them.
bool isNetworkContext(QLatin1StringView context)
{
    static constexpr std::array<QLatin1StringView, 14> prefixes{
        QLatin1StringView("QAbstractSocket"), QLatin1StringView("QDnsLookup"),
        QLatin1StringView("QDtls"),           QLatin1StringView("QHostInfo"),
        QLatin1StringView("QHttp"),           QLatin1StringView("QLocalServer"),
        QLatin1StringView("QLocalSocket"),    QLatin1StringView("QNativeSocketEngine"),
        QLatin1StringView("QNetwork"),        QLatin1StringView("QSctpSocket"),
        QLatin1StringView("QSocks5"),         QLatin1StringView("QSsl"),
        QLatin1StringView("QTcpServer"),      QLatin1StringView("QUdpSocket"),
    };
    for (const QLatin1StringView prefix : prefixes) {
        if (context.startsWith(prefix))
            return true;
    }
    return context.startsWith(QLatin1StringView("QTls"));
}

/// Qt's own catalogue for everything but its network stack.
class QtCatalogue : public QTranslator
{
public:
    using QTranslator::QTranslator;

    bool load(const QLocale &locale)
    {
        return m_catalogue.load(locale, QStringLiteral("qt"), QStringLiteral("_"),
                                QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    }

    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int n) const override
    {
        if (!context || isNetworkContext(QLatin1StringView(context)))
            return {};
        return m_catalogue.translate(context, sourceText, disambiguation, n);
    }

    bool isEmpty() const override { return m_catalogue.isEmpty(); }

private:
    QTranslator m_catalogue;
};

/// The name of the messages locale as the environment gives it, from the variables that decide it.
QString messagesLocaleName()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

/// "C", "C.UTF-8", "POSIX" or nothing: the locale of no language, which is English here.
bool isNeutral(const QString &name)
{
    const QString base = name.section(u'.', 0, 0).section(u'@', 0, 0);
    return base.isEmpty() || base == u"C" || base == u"POSIX";
}

} // namespace

QLocale messagesLocale()
{
    if (isNeutral(messagesLocaleName()))
        return QLocale::c();
    return QLocale();
}

QString installTranslations()
{
    QCoreApplication *application = QCoreApplication::instance();
    if (const auto *installed =
            application->findChild<QTranslator *>(installedName, Qt::FindDirectChildrenOnly))
        return installed->language().section(u'_', 0, 0);

    const QLocale locale = messagesLocale();
    auto *own = new QTranslator(application);
    own->setObjectName(installedName);
    // English is the texts' own language; its catalogue adds only its plural forms ("1 day ago").
    if (locale.language() == QLocale::C ||
        !own->load(locale, catalogueName, QStringLiteral("_"), catalogueFolder)) {
        if (!own->load(catalogueName + QStringLiteral("_en"), catalogueFolder))
            qWarning("kestrine: the English catalogue is missing from the resources.");
    }
    QCoreApplication::installTranslator(own);

    auto *qt = new QtCatalogue(application);
    if (own->language() != u"en" && qt->load(locale))
        QCoreApplication::installTranslator(qt);
    else
        delete qt;
    return own->language().section(u'_', 0, 0);
}

} // namespace kestrine::i18n
