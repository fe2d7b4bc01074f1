#include "Views/Now/HeroModel.h"

#include "Views/Shared/Words.h"

namespace vantoro {

QString lookingHeadline() {
    return tr("Looking…");
}

HeroModel heroModel(const SensorHub& hub, const Settings& settings) {
    if (const Measuring measuring = hub.measuring(); measuring != Measuring::done)
        return {.eyebrow = measuringEyebrow(),
                .headline = lookingHeadline(),
                .detail = measuring == Measuring::withoutList
                              ? tr("No list of processes has come yet. Vantoro keeps trying.")
                              : tr("Two samples and the first list of processes are needed before anything can be "
                                   "said. That takes about two seconds."),
                .dials = dialsModel(hub),
                .rotorsTurn = settings.value(Setting::spinRotors)};
    const Verdict& verdict = hub.verdict();
    return {.eyebrow = eyebrowModel(verdict),
            .headline = toQString(verdict.headline),
            .detail = toQString(verdict.detail),
            .dials = dialsModel(hub),
            .rotorsTurn = settings.value(Setting::spinRotors)};
}

bool HeadlineAnnouncer::isDue(const QString& headline, double now) {
    if (!told_) {
        told_ = headline;
        return false;
    }
    if (headline == *told_ || (lastTime_ && now - *lastTime_ < shortestInterval))
        return false;
    told_ = headline;
    lastTime_ = now;
    return true;
}

} // namespace vantoro
