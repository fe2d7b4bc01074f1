#include "Platform/Linux/Updates/UpdateSchedule.h"

namespace vantoro {

namespace {

constexpr double hour = 3600;
constexpr double day = 24 * hour;

} // namespace

double nextAutomaticCheck(double now, bool hasChecked, bool failed, double share) {
    const double pause = !hasChecked ? 0 : failed ? hour : day;
    return now + pause + share * hour;
}

double plannedCheck(std::optional<double> stored, double now, double share) {
    const bool isPlausible = stored && *stored <= now + day + hour;
    return isPlausible ? *stored : nextAutomaticCheck(now, false, false, share);
}

} // namespace vantoro
