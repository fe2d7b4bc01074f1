// The machine's sensors, presented as the keys of a system management controller.
#pragma once

#include "Platform/Linux/Reading/LanedReading.h"
#include "Platform/SMCService.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

class FanMemory;
class HwmonFan;
class NvidiaGPUs;
class SystemPower;
struct HwmonSensor;

/// Keys, in the order of their codes; type "flt " of 4 bytes where nothing else is said:
///   #KEY            how many keys there are ("ui32")
///   FNum            how many fans ("ui8 "), at most 62; 0 only where it may be said that there are none (isFanless),
///                   and no key where that is not known
///   F0Ac F0Mn F0Mx F0Tg   speed, floor, ceiling and set speed of the first fan, in revolutions per minute; the second
///                   character counts in base 62. The machine's own come first; others have no floor and ceiling
///   F0MS            where floor and ceiling come from ("ui8 "): a value of FanLimitSource
///   Tp.. Tg.. TB.. Ts..   temperatures in degrees Celsius (SensorFamilies)
///   PSTR PDTR PPBR  watts of the system, the adapter and the battery
/// A key whose sensor gives nothing credible at this moment answers with a result other than 0.
///
/// On a Mac the driver labels its sensors with the controller's own keys, and those are the keys.
class HwmonSMCService : public SMCService {
public:
    /// `root` is the folder that holds sys. `gpus` may be null. `fanMemory` is the file that holds what was learned of
    /// the fans, empty for none.
    HwmonSMCService(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus,
                    const std::string& fanMemory = "");
    ~HwmonSMCService() override;

    /// 1 for "AppleSMC" on a machine with any sensor at all.
    std::uint32_t open(const char* className) override;
    bool call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) override;
    std::uint32_t close(std::uint32_t handle) override;
    bool isController() const override { return false; }
    /// Many and noisy where the chip's own sensors come from a Mac's controller, else few and honest.
    SensorTrust trust() const override;
    std::string fanName(int fan) const override;
    /// Looks every few seconds whether a driver came, went or came again.
    std::uint64_t generation() override;
    void waitForSlowSensors(double seconds) override { lane_->waitAlways(seconds); }

private:
    struct Keys;

    const Keys& keys() const;

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<NvidiaGPUs> gpus_;
    std::shared_ptr<FanMemory> fanMemory_;
    /// Found when first asked for.
    mutable std::unique_ptr<Keys> keys_;
    mutable std::string signature_;
    std::uint64_t generation_ = 0;
    double checkedAt_ = 0;
};

} // namespace vantoro
