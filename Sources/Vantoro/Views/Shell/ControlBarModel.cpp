#include "Views/Shell/ControlBarModel.h"

#include "Model/Live/SensorHub.h"
#include "Views/Shared/Words.h"

namespace vantoro {

Badge badge(const SensorHub& hub, bool simulates) {
    if (hub.isReplay())
        return {.icon = "tape.replay",
                .text = tr("Replay"),
                .tooltip = tr("A recording is shown in place of this machine's sensors and processes.")};
    if (simulates)
        return {.icon = "flask",
                .text = tr("Simulated"),
                .tooltip = tr("The sensors are simulated; processes and load are this machine's own.")};
    return {};
}

QString windowTitle(const Badge& badge) {
    return badge.text.isEmpty() ? QStringLiteral("Vantoro") : QStringLiteral("Vantoro — ") + badge.text;
}

} // namespace vantoro
