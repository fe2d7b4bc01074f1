#include "Views/NoticeModel.h"

#include "Views/Words.h"

namespace vantoro {

Notice missingMenuBarNotice() {
    return {.title = tr("No menu bar to sit in"),
            .text = tr("This desktop shows no status items, so Vantoro has only this window. Closing it ends the "
                       "program; opening Vantoro again while it runs brings the window back to the front."),
            .answer = tr("OK")};
}

} // namespace vantoro
