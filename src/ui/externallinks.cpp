#include "externallinks.h"

#include "weblinks.h"

#include <QDesktopServices>

namespace kestrine::ui {

ExternalLinks::ExternalLinks(QObject *parent)
    : QObject(parent)
{}

bool ExternalLinks::isOpenable(const QUrl &url)
{
    if (isWebPage(url))
        return true;
    // QUrl keeps schemes lower-cased, so "MAILTO:" is "mailto" here.
    return url.isValid() && url.scheme() == u"mailto" && !url.path().isEmpty();
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
