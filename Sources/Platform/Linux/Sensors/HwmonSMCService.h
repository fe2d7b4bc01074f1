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

class HwmonFan;
class NvidiaGPUs;
class SystemPower;
struct HwmonSensor;

/// Keys, in the order of their codes; type "flt " of 4 bytes where nothing else is said:
///   #KEY            how many keys there are ("ui32")
///   FNum            how many fans ("ui8 "), at most 10; 0 only where it may be said that there are none (isFanless),
///                   and no key where that is not known
///   F0Ac F0Mn F0Mx F0Tg   speed, floor, ceiling and set speed of the first fan, in revolutions per minute
///   F0MS            where the ceiling comes from ("ui8 "): a value of FanMaximumSource
///   Tp.. Tg.. TB.. Ts..   temperatures in degrees Celsius (SensorFamilies)
///   PSTR PDTR PPBR  watts of the system, the adapter and the battery
/// A key whose sensor gives nothing credible at this moment answers with a result other than 0.
///
/// On a Mac the driver labels its sensors with the controller's own keys, and those are the keys.
class HwmonSMCService : public SMCService {
public:
    /// `root` is the folder that holds sys. `gpus` may be null.
    HwmonSMCService(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus);
    ~HwmonSMCService() override;

    /// 1 for "AppleSMC" on a machine with any sensor at all.
    std::uint32_t open(const char* className) override;
    bool call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) override;
    std::uint32_t close(std::uint32_t handle) override;
    bool isController() const override { return false; }
    /// Many and noisy where the chip's own sensors come from a Mac's controller, else few and honest.
    SensorTrust trust() const override;

private:
    struct Keys;

    const Keys& keys() const;

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<NvidiaGPUs> gpus_;
    /// Found when first asked for.
    mutable std::unique_ptr<Keys> keys_;
};

} // namespace vantoro
