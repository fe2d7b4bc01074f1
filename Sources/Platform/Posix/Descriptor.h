// The owner of every file descriptor.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace vantoro {

/// Owns a file descriptor, or none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { close(); }

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    /// Hands it to somebody who closes it.
    int release() { return std::exchange(number_, -1); }
    /// False, with errno set, when the system reports that something written before was lost.
    bool close();

    /// What one read gives, however often it is interrupted: 0 at the end; none, with errno set, on failure.
    std::optional<std::size_t> read(char* buffer, std::size_t size) const;
    /// All of it; false, with errno set, on failure.
    bool write(std::string_view bytes) const;

private:
    int number_ = -1;
};

} // namespace vantoro
