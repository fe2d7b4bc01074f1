#include "CSensors/smc.h"

#include <bit>
#include <cstring>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

struct Connection {
    std::shared_ptr<SMCService> service;
    /// 0 while not open.
    std::uint32_t handle = 0;
};

Connection connection;

void writeText(std::uint32_t code, char text[5]) {
    for (int i = 0; i < 4; ++i)
        text[i] = static_cast<char>(code >> (24 - 8 * i) & 0xFF);
    text[4] = 0;
}

std::optional<SMCKeyData> exchange(SMCCommand command, SMCKeyData request) {
    request.data8 = static_cast<std::uint8_t>(command);
    SMCKeyData reply;
    if (!connection.service->call(connection.handle, request, reply))
        return std::nullopt;
    return reply;
}

/// None when the call fails or the controller refuses.
std::optional<SMCKeyInfo> readKeyInfo(std::uint32_t key) {
    const std::optional<SMCKeyData> reply = exchange(SMCCommand::readKeyInfo, {.key = key});
    return reply && reply->result == 0 ? std::optional(reply->keyInfo) : std::nullopt;
}

/// None when the call fails; the controller's opinion is in the reply's result.
std::optional<SMCKeyData> readBytes(std::uint32_t key, std::uint32_t dataSize) {
    return exchange(SMCCommand::readBytes, {.key = key, .keyInfo = {.dataSize = dataSize}});
}

using Payload = std::array<std::uint8_t, 32>;

std::uint16_t bigEndian16(const Payload& bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint32_t bigEndian32(const Payload& bytes) {
    return std::uint32_t{bigEndian16(bytes)} << 16 | static_cast<std::uint32_t>(bytes[2] << 8 | bytes[3]);
}

/// Alone among the types, a float comes in the host's order.
double littleEndianFloat(const Payload& bytes) {
    const std::uint32_t word = static_cast<std::uint32_t>(bytes[3]) << 24 | static_cast<std::uint32_t>(bytes[2]) << 16 |
                               static_cast<std::uint32_t>(bytes[1]) << 8 | bytes[0];
    return std::bit_cast<float>(word);
}

std::optional<double> decode(const SMCKeyInfo& info, const Payload& bytes) {
    switch (info.dataType) {
    case keyCode("flt "):
        return info.dataSize == 4 ? std::optional(littleEndianFloat(bytes)) : std::nullopt;
    case keyCode("ui8 "):
    case keyCode("ui  "): // a second code for the same type
        return bytes[0];
    case keyCode("ui16"):
        return bigEndian16(bytes);
    case keyCode("ui32"):
        return bigEndian32(bytes);
    case keyCode("si8 "):
        return static_cast<std::int8_t>(bytes[0]);
    case keyCode("si16"):
        return static_cast<std::int16_t>(bigEndian16(bytes));
    case keyCode("fpe2"): // whole revolutions: the two bits of fraction are dropped
        return bigEndian16(bytes) >> 2;
    case keyCode("fp88"): // signed, as machines report it, whatever its name says
    case keyCode("sp78"):
        return static_cast<std::int16_t>(bigEndian16(bytes)) / 256.0;
    default:
        return std::nullopt;
    }
}

} // namespace

void smc_use(std::shared_ptr<SMCService> service) {
    smc_close();
    connection.service = std::move(service);
}

unsigned smc_open() {
    if (connection.handle != 0)
        return 1;
    if (!connection.service)
        return 0;
    connection.handle = connection.service->open("AppleSMC");
    return connection.handle != 0 ? 1 : 0;
}

unsigned smc_close() {
    if (connection.handle == 0)
        return 0;
    return connection.service->close(std::exchange(connection.handle, 0));
}

std::uint32_t smc_key_count() {
    constexpr std::uint32_t key = keyCode("#KEY");
    if (connection.handle == 0)
        return 0;
    const std::optional<SMCKeyInfo> info = readKeyInfo(key);
    if (!info)
        return 0;
    // Some controllers put a non-zero result beside a count that is right: only the call itself may fail.
    const std::optional<SMCKeyData> reply = readBytes(key, info->dataSize);
    return reply ? bigEndian32(reply->bytes) : 0;
}

unsigned smc_key_at_index(std::uint32_t index, char key_out[5], char type_out[5], std::uint32_t* size_out) {
    if (connection.handle == 0)
        return 0;
    const std::optional<SMCKeyData> reply = exchange(SMCCommand::getKeyAtIndex, {.data32 = index});
    if (!reply)
        return 0;
    const std::optional<SMCKeyInfo> info = readKeyInfo(reply->key);
    if (!info)
        return 0;
    writeText(reply->key, key_out);
    writeText(info->dataType, type_out);
    *size_out = info->dataSize;
    return 1;
}

unsigned smc_read_number(const char* key, double* value_out) {
    if (key == nullptr || connection.handle == 0 || std::strlen(key) != 4)
        return 0;
    const std::uint32_t code = keyCode(key);
    const std::optional<SMCKeyInfo> info = readKeyInfo(code);
    if (!info)
        return 0;
    const std::optional<SMCKeyData> reply = readBytes(code, info->dataSize);
    if (!reply || reply->result != 0)
        return 0;
    const std::optional<double> value = decode(*info, reply->bytes);
    if (!value)
        return 0;
    *value_out = *value;
    return 1;
}

} // namespace vantoro
