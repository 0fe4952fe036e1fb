#include "externallinks.h"

#include <QDesktopServices>

namespace kestrine::ui {

ExternalLinks::ExternalLinks(QObject *parent)
    : QObject(parent)
{}

bool ExternalLinks::isOpenable(const QUrl &url)
{
    if (!url.isValid() || url.isRelative())
        return false;
    // QUrl keeps schemes lower-cased, so "HTTPS:" is "https" here.
    const QString scheme = url.scheme();
    if (scheme == u"http" || scheme == u"https")
        return !url.host().isEmpty();
    return scheme == u"mailto" && !url.path().isEmpty();
}

bool ExternalLinks::isOpenable(const QString &link)
{
    return isOpenable(QUrl(link));
}

bool ExternalLinks::open(const QString &link)
{
    const QUrl url(link);
    if (!isOpenable(url))
        return false;
    return QDesktopServices::openUrl(url);
}

} // namespace kestrine::ui
