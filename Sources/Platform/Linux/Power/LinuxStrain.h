// What strains the machine, from /proc/pressure, the processors' throttle counters, the cooling devices, the graphics
// drivers and the platform's profile. Layout: Documentation/accounting/psi.rst, driver-api/thermal/sysfs-api.rst and
// ABI/testing/sysfs-platform_profile in the kernel's sources, and x86's therm_throt driver.
#pragma once

#include "Platform/Linux/Power/GraphicsDevices.h"
#include "Platform/Linux/Power/SystemPower.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Strain.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// The processors' own counters of how often heat slowed them down: one per core and one per package (processors of a
/// core share theirs), and for how long it did, per package. Found at the first look.
class ThrottleCounters {
public:
    struct Look {
        /// There are any.
        bool isKnown = false;
        /// Some have grown since the look before.
        bool grew = false;
        /// By how much the longest throttled package's time has.
        double milliseconds = 0;
    };

    ThrottleCounters(std::string root, std::shared_ptr<SlowLane> lane);

    /// Looks at most once in 200 ms: more than one asks.
    const Look& look();

private:
    struct Counter {
        LanedReading<std::int64_t> reading;
        std::optional<std::int64_t> last;

        std::int64_t growth();
    };

    void discover();

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    bool isDiscovered_ = false;
    std::vector<Counter> counts_;
    std::vector<Counter> times_;
    Look last_;
    std::optional<double> lookedAt_;
};

/// Which of the reasons that come and go are there to stay: a processor that boosts touches its limits for a moment
/// without being slowed down. A reason counts that was there in two of the last three looks, or for a good part of the
/// time between two. After a minute without a look all is forgotten.
class LastingReasons {
public:
    ThrottleReasons add(ThrottleReasons seen, ThrottleReasons lasting, double seconds);

private:
    std::array<ThrottleReasons, 2> before_;
    std::optional<double> addedAt_;
};

/// The share of "some avg10=1.23 …", 0 to 100; none when there is none.
std::optional<double> parseStall(std::string_view text);

/// The word of /sys/firmware/acpi/platform_profile.
PowerProfile powerProfile(std::string_view word);

/// Reasons: "temperature" where throttle counters grow, a cooling device that slows a processor is at work, powerclamp
/// or injected idleness among them, or a graphics driver says so; "power", "current" and "firmware" where a graphics
/// driver says so (the limits of a processor's package are among them); a Raspberry Pi's firmware; "profile" while the
/// platform is set to save power, to stay cool or to stay quiet.
class LinuxStrain : public Strain {
public:
    /// `root` is the folder that holds proc and sys. `gpus` may be null.
    LinuxStrain(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus,
                std::shared_ptr<ThrottleCounters> counters);

    /// Read at most once in 200 ms.
    StrainReading read() override;

private:
    using ReasonsReading = LanedReading<ThrottleReasons>;

    void discover();
    std::optional<std::vector<ThrottleReason>> throttle(const GraphicsReading& graphics, double now);
    PowerProfile profile(double now);

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<NvidiaGPUs> gpus_;
    std::shared_ptr<ThrottleCounters> counters_;
    bool isDiscovered_ = false;
    std::array<SensorFile, 3> stalls_;
    std::optional<ProcessorPower> processors_;
    std::optional<GraphicsDevices> graphics_;
    std::optional<ReasonsReading> cooling_;
    std::optional<LanedReading<PowerProfile>> profileReading_;
    std::optional<double> profileReadAt_;
    LastingReasons lasting_;
    StrainReading last_;
    std::optional<double> readAt_;
};

} // namespace vantoro
