#include "Views/Shared/NoticeModel.h"

#include "Views/Shared/Words.h"

namespace vantoro {

Notice missingMenuBarNotice() {
    return {.title = tr("No menu bar to sit in"),
            .text = tr("This desktop shows no status items, so Vantoro has only this window. Closing it ends the "
                       "program; opening Vantoro again while it runs brings the window back to the front."),
            .answer = tr("OK")};
}

} // namespace vantoro
