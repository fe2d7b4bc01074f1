// A machine's sensors as a test writes them down: each seam over plain data, with the faults that a real one may have.
#pragma once

#include "Platform/EnergyReport.h"
#include "Platform/FrequencyTables.h"
#include "Platform/Processors.h"
#include "Platform/SMCService.h"
#include "Platform/StateReport.h"
#include "Support/Testing.h"

#include <bit>
#include <cstring>

namespace vantoro::testing {

/// A system management controller that holds the keys it is given, in that order.
class ScriptedSMC : public SMCService {
public:
    struct Key {
        std::string name;
        std::string type;
        std::vector<std::uint8_t> bytes;
        /// What read-key-info reports; the payload's own size unless a test says otherwise.
        std::uint32_t size = 0;
    };

    std::vector<Key> keys;
    bool refusesToOpen = false;
    SensorTrust sensorTrust = SensorTrust::manyAndNoisy;
    /// Which commands fail for which key: as a call, or with a result that is not 0.
    std::set<std::pair<std::string, SMCCommand>> failingCalls;
    std::set<std::pair<std::string, SMCCommand>> badResults;
    /// How many more reads of a key fail before it can be read.
    std::map<std::string, int> failingReads;
    int calls = 0;
    int opened = 0;
    int closed = 0;
    SMCKeyData lastRequest;

    void set(const std::string& name, const std::string& type, std::vector<std::uint8_t> bytes) {
        const auto size = static_cast<std::uint32_t>(bytes.size());
        const auto found = std::ranges::find(keys, name, &Key::name);
        if (found != keys.end())
            *found = {name, type, std::move(bytes), size};
        else
            keys.push_back({name, type, std::move(bytes), size});
    }
    void setFloat(const std::string& name, double value) {
        const auto word = std::bit_cast<std::uint32_t>(static_cast<float>(value));
        set(name, "flt ",
            {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8),
             static_cast<std::uint8_t>(word >> 16), static_cast<std::uint8_t>(word >> 24)});
    }
    /// Keys "Tp00", "Tp01" … with these values.
    void setFamily(const std::string& prefix, const std::vector<double>& values) {
        for (std::size_t i = 0; i < values.size(); ++i)
            setFloat(prefix + static_cast<char>('0' + i / 10) + static_cast<char>('0' + i % 10), values[i]);
    }
    void remove(const std::string& name) {
        std::erase_if(keys, [&](const Key& key) { return key.name == name; });
    }

    std::uint32_t open(const char* className) override {
        if (refusesToOpen || std::strcmp(className, "AppleSMC") != 0)
            return 0;
        ++opened;
        return 7;
    }
    std::uint32_t close(std::uint32_t handle) override {
        ++closed;
        return handle == 7 ? 0x2A : 1;
    }
    SensorTrust trust() const override { return sensorTrust; }

    bool call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) override {
        ++calls;
        lastRequest = request;
        const auto command = static_cast<SMCCommand>(request.data8);
        const Key* const key = find(request, command);
        const std::pair<std::string, SMCCommand> step{key != nullptr ? key->name : "", command};
        if (handle != 7 || failingCalls.contains(step))
            return false;
        reply.result = key == nullptr || badResults.contains(step) ? 0x84 : 0;
        if (key == nullptr)
            return true;
        if (command == SMCCommand::readKeyInfo && failingReads[key->name]-- > 0)
            reply.result = 0x84;
        reply.key = keyCode(key->name);
        reply.keyInfo = {.dataSize = key->size, .dataType = keyCode(key->type)};
        if (command == SMCCommand::readBytes)
            std::copy_n(key->bytes.begin(), std::min<std::size_t>(key->bytes.size(), 32), reply.bytes.begin());
        return true;
    }

private:
    const Key* find(const SMCKeyData& request, SMCCommand command) {
        const auto count = static_cast<std::uint32_t>(keys.size());
        count_ = {"#KEY",
                  "ui32",
                  {static_cast<std::uint8_t>(count >> 24), static_cast<std::uint8_t>(count >> 16),
                   static_cast<std::uint8_t>(count >> 8), static_cast<std::uint8_t>(count)},
                  4};
        if (command == SMCCommand::getKeyAtIndex)
            return request.data32 < keys.size() ? &keys[request.data32] : nullptr;
        const auto found = std::ranges::find(keys, request.key, [](const Key& key) { return keyCode(key.name); });
        if (found != keys.end())
            return &*found;
        return request.key == keyCode("#KEY") ? &count_ : nullptr;
    }

    Key count_;
};

/// A report whose samples show what `channels` holds at that moment.
template <class Report, class Sample, class Channel>
class ScriptedReport : public Report {
public:
    std::vector<Channel> channels;
    bool loads = true;
    bool subscribes = true;
    bool samples = true;

    bool load() override { return loads; }
    bool subscribe() override { return subscribes; }
    std::unique_ptr<Sample> sample() override { return samples ? take(channels) : nullptr; }

protected:
    virtual std::unique_ptr<Sample> take(const std::vector<Channel>& now) = 0;

    class Channels : public Sample {
    public:
        explicit Channels(std::vector<Channel> channels) : channels_(std::move(channels)) {}
        int channelCount() const override { return static_cast<int>(channels_.size()); }
        std::optional<std::string_view> channelName(int channel) const override { return at(channel).name; }

    protected:
        const Channel& at(int channel) const { return channels_.at(static_cast<std::size_t>(channel)); }

    private:
        std::vector<Channel> channels_;
    };
};

struct StateChannel {
    std::optional<std::string> name;
    std::vector<std::pair<std::optional<std::string>, std::uint64_t>> states;
};

/// The cores' residencies.
class ScriptedStates : public ScriptedReport<StateReport, StateSample, StateChannel> {
    class Now : public Channels {
    public:
        using Channels::Channels;
        int stateCount(int channel) const override { return static_cast<int>(at(channel).states.size()); }
        std::uint64_t residency(int channel, int state) const override { return of(channel, state).second; }
        std::optional<std::string_view> stateName(int channel, int state) const override {
            return of(channel, state).first;
        }

    private:
        const std::pair<std::optional<std::string>, std::uint64_t>& of(int channel, int state) const {
            return at(channel).states.at(static_cast<std::size_t>(state));
        }
    };
    std::unique_ptr<StateSample> take(const std::vector<StateChannel>& now) override {
        return std::make_unique<Now>(now);
    }
};

struct EnergyChannel {
    std::optional<std::string> name;
    std::optional<std::string> unit;
    std::int64_t value = 0;
};

/// The energy counters.
class ScriptedEnergy : public ScriptedReport<EnergyReport, EnergySample, EnergyChannel> {
    class Now : public Channels {
    public:
        using Channels::Channels;
        std::optional<std::string_view> unitLabel(int channel) const override { return at(channel).unit; }
        std::int64_t value(int channel) const override { return at(channel).value; }
    };
    std::unique_ptr<EnergySample> take(const std::vector<EnergyChannel>& now) override {
        return std::make_unique<Now>(now);
    }
};

/// The voltage-state tables: kilohertz per entry.
class ScriptedTables : public FrequencyTables {
public:
    using Properties = std::map<std::string, std::vector<std::uint32_t>>;
    std::optional<Properties> atPath;
    std::optional<std::vector<Properties>> named;
    bool middleTier = false;

    bool hasMiddleTier() const override { return middleTier; }

    std::unique_ptr<RegistryEntry> entryAtPath(const std::string& path) override {
        return atPath && path == "IODeviceTree:/arm-io/pmgr" ? std::make_unique<Entry>(*atPath) : nullptr;
    }
    std::optional<std::vector<std::unique_ptr<RegistryEntry>>> entriesNamed(const std::string& name) override {
        if (!named || name != "pmgr")
            return std::nullopt;
        std::vector<std::unique_ptr<RegistryEntry>> entries;
        for (const Properties& properties : *named)
            entries.push_back(std::make_unique<Entry>(properties));
        return entries;
    }

    class Entry : public RegistryEntry {
    public:
        explicit Entry(Properties properties) : properties_(std::move(properties)) {}
        std::optional<std::vector<std::uint8_t>> data(const std::string& property) const override {
            const auto found = properties_.find(property);
            if (found == properties_.end())
                return std::nullopt;
            std::vector<std::uint8_t> bytes;
            for (const std::uint32_t kilohertz : found->second) {
                for (int shift = 0; shift < 32; shift += 8)
                    bytes.push_back(static_cast<std::uint8_t>(kilohertz >> shift));
                bytes.insert(bytes.end(), {0xEE, 0xEE, 0xEE, 0xEE});
            }
            bytes.insert(bytes.end(), {1, 2, 3}); // less than a record
            return bytes;
        }

    private:
        Properties properties_;
    };
};

class ScriptedProcessors : public Processors {
public:
    ProcessorCounts processorCounts;
    ProcessorTiers processorTiers;
    std::vector<HostTicks> ticks;
    int code = 0;

    ProcessorCounts counts() override { return processorCounts; }
    ProcessorTiers tiers() override { return processorTiers; }
    int readTicks(std::vector<HostTicks>& out) override {
        if (code == 0)
            out = ticks;
        return code;
    }
};

} // namespace vantoro::testing
