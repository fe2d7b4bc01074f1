#include "Platform/Linux/Updates/Preparation/ArchiveSignature.h"

#include <array>
#include <sodium.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace vantoro {

namespace {

/// A file's bytes in memory without reading them in: a signature takes the whole of them at once.
class MappedFile {
public:
    explicit MappedFile(int file) {
        struct stat status = {};
        if (::fstat(file, &status) != 0 || status.st_size <= 0)
            return;
        void* const bytes = ::mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, file, 0);
        if (bytes == MAP_FAILED)
            return;
        bytes_ = bytes;
        size_ = static_cast<std::size_t>(status.st_size);
    }
    ~MappedFile() {
        if (bytes_ != nullptr)
            ::munmap(bytes_, size_);
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    const unsigned char* data() const { return static_cast<const unsigned char*>(bytes_); }
    std::size_t size() const { return size_; }

private:
    void* bytes_ = nullptr;
    std::size_t size_ = 0;
};

template <std::size_t size>
bool decode(const std::string& base64, std::array<unsigned char, size>& bytes) {
    std::size_t written = 0;
    return ::sodium_base642bin(bytes.data(), bytes.size(), base64.data(), base64.size(), nullptr, &written, nullptr,
                               sodium_base64_VARIANT_ORIGINAL) == 0 &&
           written == size;
}

} // namespace

bool isSignedBy(const std::string& publicKey, const std::string& signature, int archive) {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> key = {};
    std::array<unsigned char, crypto_sign_BYTES> seal = {};
    if (::sodium_init() < 0 || !decode(publicKey, key) || !decode(signature, seal))
        return false;
    const MappedFile file(archive);
    return file.data() != nullptr &&
           ::crypto_sign_verify_detached(seal.data(), file.data(), file.size(), key.data()) == 0;
}

} // namespace vantoro
