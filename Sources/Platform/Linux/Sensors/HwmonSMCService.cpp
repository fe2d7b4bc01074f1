#include "Platform/Linux/Sensors/HwmonSMCService.h"

#include "Platform/Linux/Hwmon/FanLimits.h"
#include "Platform/Linux/Hwmon/HwmonFan.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Power/SystemPower.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <set>
#include <string_view>
#include <utility>

namespace vantoro {

namespace {

constexpr std::uint32_t onlyHandle = 1;
/// The controller's own code for a key that it does not have; any other result but 0 would do.
constexpr std::uint8_t resultNoSuchKey = 0x84;
constexpr std::uint8_t resultNoValue = 0x86;
/// A fan's key has one character for its number.
constexpr std::string_view fanNumbers = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr double betweenChecksSeconds = 5;

enum class KeyType { real, byte, word };

struct Key {
    std::uint32_t code = 0;
    KeyType type = KeyType::real;
    std::function<std::optional<double>()> read;
};

SMCKeyInfo infoOf(KeyType type) {
    SMCKeyInfo info;
    info.dataType = keyCode(type == KeyType::real ? "flt " : type == KeyType::byte ? "ui8 " : "ui32");
    info.dataSize = type == KeyType::byte ? 1 : 4;
    return info;
}

void writePayload(KeyType type, double value, std::array<std::uint8_t, 32>& bytes) {
    if (type == KeyType::byte) {
        bytes[0] = static_cast<std::uint8_t>(value);
        return;
    }
    const std::uint32_t word = type == KeyType::real ? std::bit_cast<std::uint32_t>(static_cast<float>(value))
                                                     : static_cast<std::uint32_t>(value);
    for (unsigned place = 0; place < 4; ++place) // a number in the host's order, a count with its highest byte first
        bytes[place] = static_cast<std::uint8_t>(word >> 8 * (type == KeyType::real ? place : 3 - place));
}

std::uint32_t fanKey(std::size_t fan, std::string_view suffix) {
    return keyCode(fmt::format("F{}{}", fanNumbers[fan], suffix));
}

} // namespace

struct HwmonSMCService::Keys {
    std::vector<Key> list;
    std::unique_ptr<SystemPower> power;
    std::vector<std::string> fanNames;
    bool hasSensors = false;
    bool hasControllersChip = false;

    void add(std::uint32_t code, KeyType type, std::function<std::optional<double>()> read) {
        list.push_back({.code = code, .type = type, .read = std::move(read)});
    }

    const Key* find(std::uint32_t code) const {
        const auto at = std::ranges::lower_bound(list, code, {}, &Key::code);
        return at != list.end() && at->code == code ? &*at : nullptr;
    }

    void addTemperature(std::uint32_t code, const HwmonSensor& sensor, SensorFamily family,
                        const std::shared_ptr<SlowLane>& lane) {
        const auto reading = std::make_shared<HwmonReading>(sensorReading(sensor, sensor.inputPath, lane));
        add(code, KeyType::real, [reading, family]() -> std::optional<double> {
            const auto thousandths = reading->read();
            return thousandths ? credibleCelsius(*thousandths, family) : std::nullopt;
        });
    }

    void addRail(std::uint32_t code, const HwmonSensor& sensor, const std::shared_ptr<SlowLane>& lane) {
        const auto reading = std::make_shared<HwmonReading>(sensorReading(sensor, sensor.inputPath, lane));
        add(code, KeyType::real, [reading]() -> std::optional<double> {
            const auto microwatts = reading->read();
            return microwatts ? std::optional(static_cast<double>(*microwatts) / 1e6) : std::nullopt;
        });
    }

    /// What a Mac's driver passes on under the controller's own keys.
    void addControllersKeys(const std::vector<HwmonSensor>& sensors, const std::shared_ptr<SlowLane>& lane,
                            SensorKeys& keys) {
        for (const HwmonSensor& sensor : sensors) {
            if (!isMacController(sensor.driver))
                continue;
            const std::optional<std::uint32_t> key = controllerKey(sensor.label);
            const std::uint32_t code = key.value_or(0);
            const bool isTemperature = sensor.quantity == HwmonQuantity::temperature && sensor.label[0] == 'T';
            const bool isRail = sensor.quantity == HwmonQuantity::power && sensor.label[0] == 'P';
            if (!key || (!isTemperature && !isRail) || !keys.take(code))
                continue;
            if (isRail)
                addRail(code, sensor, lane);
            else
                addTemperature(code, sensor, SensorFamily::chip, lane);
            const std::string_view family = std::string_view(sensor.label).substr(0, 2);
            hasControllersChip = hasControllersChip || family == "Tp" || family == "Te" || family == "Tf";
        }
    }

    void addTemperatures(const std::vector<HwmonSensor>& sensors, const std::shared_ptr<SlowLane>& lane,
                         SensorKeys& keys) {
        // Some processors' control temperature ("Tctl") lies 10 to 27 degrees above what their dies have ("Tdie",
        // "Tccd1").
        std::set<std::string_view> withTrueDie;
        bool hasChip = hasControllersChip;
        bool hasCopy = false;
        for (const HwmonSensor& sensor : sensors) {
            if (sensor.quantity != HwmonQuantity::temperature)
                continue;
            if (sensor.label == "Tdie" || sensor.label.starts_with("Tccd"))
                withTrueDie.insert(sensor.devicePath);
            const SensorRole role = roleOf(sensor);
            hasChip = hasChip || role == SensorRole{.family = SensorFamily::chip};
            hasCopy = hasCopy || role.isCopy;
        }
        const auto addOf = [&](const HwmonSensor& sensor, SensorFamily family) {
            if (const auto code = keys.next(family))
                addTemperature(*code, sensor, family, lane);
        };
        for (const HwmonSensor& sensor : sensors) {
            if (sensor.quantity != HwmonQuantity::temperature ||
                (isMacController(sensor.driver) && controllerKey(sensor.label)) ||
                (sensor.label == "Tctl" && withTrueDie.contains(sensor.devicePath)))
                continue;
            const SensorRole role = roleOf(sensor);
            if (!role.family || (role.isCopy && hasChip))
                continue;
            addOf(sensor, *role.family);
            // Graphics that are a part of the processor have its temperature, where nothing else tells it.
            if (!hasChip && !hasCopy && sensor.hasSecondVoltage && isGraphicsDriver(sensor.driver))
                addOf(sensor, SensorFamily::chip);
        }
    }

    void addGraphics(const std::shared_ptr<NvidiaGPUs>& gpus, SensorKeys& keys) {
        const std::size_t count = gpus ? gpus->addresses().size() : 0;
        for (std::size_t place = 0; place < count; ++place)
            if (const auto code = keys.next(SensorFamily::graphics))
                add(*code, KeyType::real, [gpus, place]() -> std::optional<double> {
                    const auto& reading = gpus->readings()[place];
                    return reading ? reading->celsius : std::nullopt;
                });
    }

    void addFans(const std::string& root, const std::vector<HwmonSensor>& sensors,
                 const std::shared_ptr<SlowLane>& lane, const std::shared_ptr<FanMemory>& memory) {
        for (const FanKind kind : {FanKind::machine, FanKind::graphics, FanKind::powerSupply, FanKind::pump})
            for (const HwmonSensor& sensor : sensors)
                if (sensor.quantity == HwmonQuantity::fan && fanKindOf(sensor) == kind &&
                    fanNames.size() < fanNumbers.size())
                    addFan(sensor, std::make_shared<HwmonFan>(sensor, lane, memory));
        const std::size_t count = fanNames.size();
        if (count > 0 || isFanless(readFanEvidence(root, sensors)))
            add(keyCode("FNum"), KeyType::byte, [count] { return std::optional(static_cast<double>(count)); });
    }

    void addFan(const HwmonSensor& sensor, const std::shared_ptr<HwmonFan>& fan) {
        const std::size_t number = fanNames.size();
        fanNames.push_back(vantoro::fanName(sensor, fanNames));
        const auto ofLimits = [fan](auto of) {
            return [fan, of] {
                const auto& limits = fan->limits();
                return limits ? std::optional(static_cast<double>(of(*limits))) : std::nullopt;
            };
        };
        add(fanKey(number, "Ac"), KeyType::real, [fan] { return fan->speed(); });
        if (!sensor.targetPath.empty())
            add(fanKey(number, "Tg"), KeyType::real, [fan] { return fan->target(); });
        if (fan->kind() != FanKind::machine)
            return;
        add(fanKey(number, "Mn"), KeyType::real, ofLimits([](const FanLimits& limits) { return limits.floorRPM; }));
        add(fanKey(number, "Mx"), KeyType::real, ofLimits([](const FanLimits& limits) { return limits.ceilingRPM; }));
        add(fanKey(number, "MS"), KeyType::byte, [fan] {
            const auto source = fan->limitSource();
            return source ? std::optional(static_cast<double>(*source)) : std::nullopt;
        });
    }

    void addPower(SensorKeys& keys) {
        if (power->hasSystem() && keys.take(keyCode("PSTR")))
            add(keyCode("PSTR"), KeyType::real, [this] { return power->figures().system; });
        if (power->hasAdapter() && keys.take(keyCode("PDTR")))
            add(keyCode("PDTR"), KeyType::real, [this] { return power->figures().adapter; });
        if (power->hasBattery() && keys.take(keyCode("PPBR")))
            add(keyCode("PPBR"), KeyType::real, [this] { return power->figures().battery; });
    }
};

HwmonSMCService::HwmonSMCService(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus,
                                 const std::string& fanMemory)
    : root_(std::move(root))
    , lane_(std::move(lane))
    , gpus_(std::move(gpus))
    , fanMemory_(std::make_shared<FanMemory>(fanMemory, lane_->clock())) {}

HwmonSMCService::~HwmonSMCService() = default;

const HwmonSMCService::Keys& HwmonSMCService::keys() const {
    if (keys_)
        return *keys_;
    keys_ = std::make_unique<Keys>();
    signature_ = hwmonSignature(root_);
    const std::vector<HwmonSensor> sensors = discoverHwmon(root_);
    SensorKeys names;
    keys_->power = std::make_unique<SystemPower>(root_, sensors, lane_);
    keys_->addControllersKeys(sensors, lane_, names);
    keys_->addTemperatures(sensors, lane_, names);
    keys_->addGraphics(gpus_, names);
    keys_->addPower(names);
    keys_->hasSensors = !keys_->list.empty();
    keys_->addFans(root_, sensors, lane_, fanMemory_);
    keys_->hasSensors = keys_->hasSensors || keys_->find(fanKey(0, "Ac")) != nullptr;
    const auto count = static_cast<double>(keys_->list.size() + 1);
    keys_->add(keyCode("#KEY"), KeyType::word, [count] { return std::optional(count); });
    std::ranges::sort(keys_->list, {}, &Key::code);
    return *keys_;
}

std::uint32_t HwmonSMCService::open(const char* className) {
    return std::string_view(className) == "AppleSMC" && keys().hasSensors ? onlyHandle : 0;
}

std::uint32_t HwmonSMCService::close(std::uint32_t) {
    return 0;
}

std::string HwmonSMCService::fanName(int fan) const {
    const std::vector<std::string>& names = keys().fanNames;
    return fan >= 0 && static_cast<std::size_t>(fan) < names.size() ? names[static_cast<std::size_t>(fan)] : "";
}

std::uint64_t HwmonSMCService::generation() {
    keys();
    const double now = lane_->now();
    if (now - checkedAt_ < betweenChecksSeconds)
        return generation_;
    checkedAt_ = now;
    fanMemory_->keep();
    if (hwmonSignature(root_) != signature_) {
        keys_.reset();
        ++generation_;
    }
    return generation_;
}

SensorTrust HwmonSMCService::trust() const {
    return keys().hasControllersChip ? SensorTrust::manyAndNoisy : SensorTrust::fewAndHonest;
}

bool HwmonSMCService::call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) {
    if (handle != onlyHandle)
        return false;
    reply = {};
    const Keys& all = keys();
    if (request.data8 == static_cast<std::uint8_t>(SMCCommand::getKeyAtIndex)) {
        if (request.data32 < all.list.size())
            reply.key = all.list[request.data32].code;
        else
            reply.result = resultNoSuchKey;
        return true;
    }
    const Key* const key = all.find(request.key);
    reply.key = request.key;
    if (key == nullptr) {
        reply.result = resultNoSuchKey;
        return true;
    }
    reply.keyInfo = infoOf(key->type);
    if (request.data8 == static_cast<std::uint8_t>(SMCCommand::readKeyInfo))
        return true;
    if (request.data8 != static_cast<std::uint8_t>(SMCCommand::readBytes))
        return false;
    if (const auto value = key->read())
        writePayload(key->type, *value, reply.bytes);
    else
        reply.result = resultNoValue;
    return true;
}

} // namespace vantoro
