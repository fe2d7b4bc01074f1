#include "Platform/Linux/Reading/SensorFile.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr int mostKeptOpen = 512;
std::atomic<int> keptOpen = 0;

} // namespace

SensorFile::SensorFile(SensorFile&& other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::move(other.descriptor_)), isForbidden_(other.isForbidden_) {}

SensorFile& SensorFile::operator=(SensorFile&& other) noexcept {
    std::swap(path_, other.path_);
    std::swap(descriptor_, other.descriptor_);
    std::swap(isForbidden_, other.isForbidden_);
    return *this;
}

void SensorFile::release() {
    if (descriptor_) {
        descriptor_.close();
        --keptOpen;
    }
}

std::optional<std::string_view> SensorFile::readText(char* room, std::size_t roomBytes) {
    if (path_.empty() || isForbidden_)
        return {};
    Descriptor passing;
    if (!descriptor_) {
        Descriptor opened(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!opened) {
            // Permission does not come back while the program runs; a device may.
            isForbidden_ = errno == EACCES || errno == EPERM;
            return {};
        }
        if (++keptOpen <= mostKeptOpen) {
            descriptor_ = std::move(opened);
        } else {
            --keptOpen;
            passing = std::move(opened);
        }
    }
    const int number = descriptor_ ? descriptor_.number() : passing.number();
    ssize_t got = 0;
    do
        got = ::pread(number, room, roomBytes, 0);
    while (got < 0 && errno == EINTR);
    if (got < 0 && (errno == ENODEV || errno == ENXIO))
        release();
    if (got <= 0)
        return {};
    return std::string_view(room, static_cast<std::size_t>(got));
}

std::optional<std::int64_t> SensorFile::readNumber() {
    char room[64];
    const auto text = readText(room, sizeof room);
    return text ? parseWholeNumber(*text) : std::nullopt;
}

bool SleepCheck::isAsleep() {
    char room[32];
    const auto text = status_.readText(room, sizeof room);
    if (!text)
        return false;
    const std::string_view status = trimmedText(*text);
    return status == "suspended" || status == "suspending" || status == "resuming";
}

} // namespace vantoro
