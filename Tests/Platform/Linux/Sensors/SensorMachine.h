// A recorded machine's sensors, unpacked into a folder of its own, with a clock that the test moves.
#pragma once

#include "Platform/Linux/Reading/SlowLane.h"
#include "Platform/SMCService.h"
#include "Support/Folders.h"

#include <atomic>
#include <bit>

namespace vantoro::testing {

class SensorMachine {
public:
    /// An empty name is a machine without anything.
    explicit SensorMachine(const std::string& name = "") {
        const std::string command = VANTORO_UNPACK " " VANTORO_FIXTURES "/linux-sensors/" + name + ".txt " + root();
        if (!name.empty()) {
            EXPECT_EQ(std::system(command.c_str()), 0);
        }
    }

    const std::string& root() const { return folder_.path(); }
    /// Rewrites a file in place, so that one who keeps it open sees the new value.
    void write(const std::string& file, std::string_view value) const { folder_.write(file, value); }
    void remove(const std::string& file) const { folder_.remove(file); }
    std::shared_ptr<SlowLane> lane() const { return lane_; }
    void pass(double seconds) { *seconds_ = *seconds_ + seconds; }
    std::shared_ptr<std::atomic<double>> seconds() const { return seconds_; }

private:
    TemporaryFolder folder_;
    std::shared_ptr<std::atomic<double>> seconds_ = std::make_shared<std::atomic<double>>(100.0);
    /// Patient: a first reading comes however busy the machine is that the tests run on.
    std::shared_ptr<SlowLane> lane_ = std::make_shared<SlowLane>([seconds = seconds_] { return seconds->load(); }, 60);
};

inline SMCKeyData ask(SMCService& service, SMCCommand command, std::string_view key, std::uint32_t index = 0) {
    SMCKeyData request;
    request.key = keyCode(key);
    request.data8 = static_cast<std::uint8_t>(command);
    request.data32 = index;
    SMCKeyData reply;
    EXPECT_TRUE(service.call(service.open("AppleSMC"), request, reply));
    return reply;
}

/// None when the key has no value at this moment.
inline std::optional<double> value(SMCService& service, std::string_view key) {
    const SMCKeyData reply = ask(service, SMCCommand::readBytes, key);
    if (reply.result != 0)
        return {};
    std::uint32_t word = 0;
    for (int place = 3; place >= 0; --place)
        word = word << 8 | reply.bytes[static_cast<std::size_t>(place)];
    return std::bit_cast<float>(word);
}

} // namespace vantoro::testing
