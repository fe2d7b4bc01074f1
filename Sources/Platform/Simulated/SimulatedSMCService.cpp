#include "Platform/Simulated/SimulatedSMCService.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>
#include <utility>

namespace vantoro {

namespace {

constexpr std::uint32_t onlyHandle = 1;
constexpr std::uint8_t keyNotFound = 0x84;

/// Spreads any number evenly over 64 bits.
std::uint64_t mixed(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15;
    value = (value ^ value >> 30) * 0xbf58476d1ce4e5b9;
    value = (value ^ value >> 27) * 0x94d049bb133111eb;
    return value ^ value >> 31;
}

/// "01", "02", … "0A", …: the endings of die sensors' names.
std::vector<std::string> countedEndings(int count) {
    constexpr std::string_view digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::vector<std::string> endings;
    for (int i = 1; i <= count; ++i)
        endings.push_back(std::string("0") + digits[static_cast<std::size_t>(i)]);
    return endings;
}

} // namespace

SimulatedSMCService::SimulatedSMCService(std::shared_ptr<SimulatedMac> mac) : mac_(std::move(mac)) {
    add("#KEY", Type::bigEndian32, [this](const ThermalModelState&) { return static_cast<double>(keys_.size()); });
    addFans();
    add("PDTR", Type::float32, [](const ThermalModelState& state) { return state.adapterWatts; });
    add("PPBR", Type::float32, [](const ThermalModelState& state) { return state.batteryWatts; });
    add("PSTR", Type::float32, [](const ThermalModelState& state) { return state.systemWatts; });
    addSensors("TB", {"0T", "1T", "2T"}, 0.05,
               [](const ThermalModelState& state, double offset) { return state.batteryCelsius + 0.8 * offset; });
    addSensors("Tg", countedEndings(10), 0.15, [](const ThermalModelState& state, double offset) {
        return state.chipCelsius + 1 + 2 * state.gpuWatts + 4 * offset;
    });
    // The coolest spot lies as far below the mean as the hottest lies above.
    addSensors("Tp", countedEndings(24), 0.15, [](const ThermalModelState& state, double offset) {
        return state.hottestCelsius + 2 * offset * (state.hottestCelsius - state.chipCelsius);
    });
    addSensors("Ts", {"0P", "0S", "1P", "1S"}, 0.05,
               [](const ThermalModelState& state, double offset) { return state.surfaceCelsius + 1.5 * offset; });
}

void SimulatedSMCService::addFans() {
    const std::vector<FanDesign>& fans = mac_->design().fans;
    for (std::size_t i = 0; i < fans.size(); ++i) {
        const std::string name = "F" + std::to_string(i);
        const std::uint32_t speed = keyCode(name + "Ac");
        add(name + "Ac", Type::float32,
            [this, i, speed](const ThermalModelState& state) { return state.fans[i].rpm + 5 * noise(speed, state); });
        add(name + "Mn", Type::float32, [fan = fans[i]](const ThermalModelState&) { return fan.minRPM; });
        add(name + "Mx", Type::float32, [fan = fans[i]](const ThermalModelState&) { return fan.maxRPM; });
        add(name + "Tg", Type::float32, [i](const ThermalModelState& state) { return state.fans[i].targetRPM; });
    }
    add("FNum", Type::byte, [](const ThermalModelState& state) { return static_cast<double>(state.fans.size()); });
}

void SimulatedSMCService::add(const std::string& name, Type type,
                              std::function<double(const ThermalModelState&)> value) {
    keys_.push_back({keyCode(name), type, std::move(value)});
}

void SimulatedSMCService::addSensors(const std::string& prefix, const std::vector<std::string>& endings,
                                     double noiseKelvin,
                                     const std::function<double(const ThermalModelState&, double offset)>& value) {
    for (std::size_t i = 0; i < endings.size(); ++i) {
        const std::string name = prefix + endings[i];
        const double offset = -static_cast<double>(i) / static_cast<double>(endings.size() - 1);
        add(name, Type::float32, [=, this, sensor = keyCode(name)](const ThermalModelState& state) {
            return value(state, offset) + noiseKelvin * noise(sensor, state);
        });
    }
}

/// -1 to 1, anew every half second of the model's time.
double SimulatedSMCService::noise(std::uint32_t code, const ThermalModelState& state) const {
    constexpr std::uint64_t stepsPerNoise = 5;
    const std::uint64_t bits = mixed(mixed(mixed(mac_->options().seed) ^ code) ^ state.steps / stepsPerNoise);
    return static_cast<double>(bits >> 11) * 0x1p-52 - 1;
}

const SimulatedSMCService::Key* SimulatedSMCService::find(std::uint32_t code) const {
    const auto found = std::ranges::find(keys_, code, &Key::code);
    return found != keys_.end() ? &*found : nullptr;
}

std::uint32_t SimulatedSMCService::open(const char* className) {
    return std::string_view(className) == "AppleSMC" ? onlyHandle : 0;
}

std::uint32_t SimulatedSMCService::close(std::uint32_t) {
    return 0;
}

bool SimulatedSMCService::call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) {
    if (handle != onlyHandle)
        return false;
    reply = {};
    if (request.data8 == static_cast<std::uint8_t>(SMCCommand::getKeyAtIndex)) {
        if (request.data32 < keys_.size())
            reply.key = keys_[request.data32].code;
        else
            reply.result = keyNotFound;
        return true;
    }
    const Key* const key = find(request.key);
    if (!key) {
        reply.result = keyNotFound;
        return true;
    }
    reply.key = key->code;
    if (request.data8 == static_cast<std::uint8_t>(SMCCommand::readKeyInfo)) {
        reply.keyInfo.dataSize = key->type == Type::byte ? 1 : 4;
        reply.keyInfo.dataType = keyCode(key->type == Type::float32 ? "flt "
                                         : key->type == Type::byte  ? "ui8 "
                                                                    : "ui32");
        return true;
    }
    if (request.data8 != static_cast<std::uint8_t>(SMCCommand::readBytes))
        return false;
    const double value = key->value(mac_->update());
    if (key->type == Type::float32) {
        const auto number = std::bit_cast<std::uint32_t>(static_cast<float>(value));
        for (std::size_t i = 0; i < 4; ++i)
            reply.bytes[i] = static_cast<std::uint8_t>(number >> 8 * i);
    } else if (key->type == Type::byte) {
        reply.bytes[0] = static_cast<std::uint8_t>(value);
    } else {
        const auto number = static_cast<std::uint32_t>(value);
        for (std::size_t i = 0; i < 4; ++i)
            reply.bytes[i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    }
    return true;
}

} // namespace vantoro
