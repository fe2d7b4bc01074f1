#include "Views/HeroModel.h"

#include "Views/Words.h"

namespace vantoro {

HeroModel heroModel(const SensorHub& hub, const Settings& settings) {
    const Verdict& verdict = hub.verdict();
    return {.eyebrow = eyebrowModel(verdict),
            .headline = toQString(verdict.headline),
            .detail = toQString(verdict.detail),
            .dials = dialsModel(hub),
            .rotorsTurn = settings.spinRotors()};
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
