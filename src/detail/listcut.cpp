#include "listcut.h"

#include <QCoreApplication>

namespace kestrine {

QString listCutNotice(const ListCut &cut)
{
    if (cut.total) {
        return QCoreApplication::translate("ListCut", "Showing the first %1 of %2.")
            .arg(cut.shown)
            .arg(*cut.total);
    }
    return QCoreApplication::translate("ListCut", "Showing the first %1.").arg(cut.shown);
}

} // namespace kestrine
