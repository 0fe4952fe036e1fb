// The notification state file as it may be found on disk: any bytes. Reading never fails loudly
// (anything off is the empty state), and a state that was read is written and read back unchanged.

#include "fuzzsupport.h"
#include "notificationstate.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace kestrine;
using namespace kestrine::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const NotificationState state = NotificationState::fromJson(bytes(data, size));
    const QByteArray written = state.toJson();

    const QJsonDocument document = QJsonDocument::fromJson(written);
    check(document.isObject() && document.object().contains(QLatin1StringView("announcedNewPRs")) &&
              document.object().contains(QLatin1StringView("ciStatusByPR")),
          "the file always holds both keys", QString::fromUtf8(written));
    check(NotificationState::fromJson(written) == state, "a state reads back as it was written",
          QString::fromUtf8(written));
    return 0;
}
