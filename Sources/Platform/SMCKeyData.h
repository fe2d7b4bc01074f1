// The record that every exchange with a system management controller consists of, request and reply alike: a wire
// format of 80 bytes. Integers are in the host's (little-endian) order, the payload in the controller's own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vantoro {

/// A key or a type, four characters, as its code, the first in the most significant byte.
constexpr std::uint32_t keyCode(std::string_view text) {
    std::uint32_t code = 0;
    for (std::size_t place = 0; place < 4; ++place)
        code = code << 8 | static_cast<unsigned char>(place < text.size() ? text[place] : ' ');
    return code;
}

struct SMCKeyInfo {
    /// Length of the payload in bytes.
    std::uint32_t dataSize = 0;
    /// As keyCode gives it.
    std::uint32_t dataType = 0;
    std::uint8_t dataAttributes = 0;
    std::array<std::uint8_t, 3> padding{};

    bool operator==(const SMCKeyInfo&) const = default;
};

struct SMCKeyData {
    /// As keyCode gives it.
    std::uint32_t key = 0;
    std::array<std::uint8_t, 8> version{};
    std::array<std::uint8_t, 16> limits{};
    SMCKeyInfo keyInfo;
    /// Of the reply; 0 means success.
    std::uint8_t result = 0;
    std::uint8_t status = 0;
    /// Of the request: one of SMCCommand.
    std::uint8_t data8 = 0;
    std::uint8_t padding = 0;
    /// Argument of the request.
    std::uint32_t data32 = 0;
    std::array<std::uint8_t, 32> bytes{};

    bool operator==(const SMCKeyData&) const = default;
};

static_assert(sizeof(SMCKeyData) == 80);
static_assert(offsetof(SMCKeyData, key) == 0);
static_assert(offsetof(SMCKeyData, version) == 4);
static_assert(offsetof(SMCKeyData, limits) == 12);
static_assert(offsetof(SMCKeyData, keyInfo) == 28);
static_assert(offsetof(SMCKeyInfo, dataSize) == 0);
static_assert(offsetof(SMCKeyInfo, dataType) == 4);
static_assert(offsetof(SMCKeyInfo, dataAttributes) == 8);
static_assert(offsetof(SMCKeyInfo, padding) == 9);
static_assert(offsetof(SMCKeyData, result) == 40);
static_assert(offsetof(SMCKeyData, status) == 41);
static_assert(offsetof(SMCKeyData, data8) == 42);
static_assert(offsetof(SMCKeyData, padding) == 43);
static_assert(offsetof(SMCKeyData, data32) == 44);
static_assert(offsetof(SMCKeyData, bytes) == 48);

enum class SMCCommand : std::uint8_t { readBytes = 5, getKeyAtIndex = 8, readKeyInfo = 9 };

} // namespace vantoro
