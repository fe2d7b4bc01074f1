#include "Platform/Linux/Updates/Preparation/ReleasePreparation.h"

#include "Model/Text/Release.h"
#include "Platform/Linux/Updates/Copy/PreparationProtocol.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <QProcess>
#include <sodium.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

namespace fs = std::filesystem;

constexpr int trialMilliseconds = 20'000;

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

/// Ed25519 (libsodium) over everything that the open file holds; key and signature in base64. False for a file that
/// cannot be read and for a key or signature that is none.
bool isSignedBy(const std::string& publicKey, const std::string& signature, int archive) {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> key = {};
    std::array<unsigned char, crypto_sign_BYTES> seal = {};
    if (::sodium_init() < 0 || !decode(publicKey, key) || !decode(signature, seal))
        return false;
    const MappedFile file(archive);
    return file.data() != nullptr &&
           ::crypto_sign_verify_detached(seal.data(), file.data(), file.size(), key.data()) == 0;
}

constexpr mode_t runBits = 0111;

/// A file's mode from that of its model: whoever may read a program may run it, and nobody anything else.
mode_t fileMode(mode_t model, bool isProgram) {
    const mode_t readable = model & 0666;
    return isProgram ? readable | ((readable & 0444) >> 2) : readable;
}

bool takeOver(const std::string& path, const struct stat& model) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        return false;
    const bool isFolder = S_ISDIR(status.st_mode);
    const bool isRoot = ::geteuid() == 0;
    const bool isAnothers = status.st_gid != model.st_gid || (isRoot && status.st_uid != model.st_uid);
    if (isAnothers && ::lchown(path.c_str(), isRoot ? model.st_uid : static_cast<uid_t>(-1), model.st_gid) != 0)
        return false;
    // A folder that hands its group on does so still; the next update has to get into it.
    const mode_t mode =
        isFolder ? (model.st_mode & (S_ISGID | 0777)) | 0700 : fileMode(model.st_mode, (status.st_mode & runBits) != 0);
    return ::chmod(path.c_str(), mode) == 0;
}

/// Gives the new copy's folders and files the modes and the group of the old one's of the same path, and the owner too
/// where root does it; what is new in it has those of the old copy's folder. A file can be run where it could before
/// this call, and no right to become somebody else is handed on. A fault is the path that was refused, with errno.
Outcome<> takeRightsOver(const std::string& newCopy, const std::string& oldCopy) {
    struct stat top = {};
    if (::lstat(oldCopy.c_str(), &top) != 0)
        return oldCopy;
    std::error_code fault;
    fs::recursive_directory_iterator entry(newCopy, fault);
    for (const fs::recursive_directory_iterator end; !fault && entry != end; entry.increment(fault)) {
        const fs::path inside = entry->path().lexically_relative(newCopy);
        struct stat model = {};
        const bool isKnown = ::lstat((oldCopy / inside).c_str(), &model) == 0 &&
                             S_ISDIR(model.st_mode) == entry->is_directory(fault) && !S_ISLNK(model.st_mode);
        if (!takeOver(entry->path(), isKnown ? model : top))
            return entry->path().string();
    }
    if (fault) {
        errno = fault.value();
        return newCopy;
    }
    return takeOver(newCopy, top) ? Outcome<>() : newCopy;
}

/// The whole of what is written to the disk that the folder lies on.
bool writeOut(const std::string& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor && ::syncfs(descriptor.number()) == 0;
}

/// Whether the unpacked release is the expected one.
Outcome<> check(const std::string& folder, const ExpectedRelease& expected) {
    const auto manifest = manifestOfWholeCopy(folder);
    if (!manifest)
        return "its files are not those that its manifest names";
    if (manifest->version != expected.version || manifest->build != expected.build)
        return fmt::format("it is {} ({}), not {} ({})", manifest->version, manifest->build, expected.version,
                           expected.build);
    if (compareVersions(manifest->build, expected.currentBuild) <= 0)
        return fmt::format("build {} is not newer", manifest->build);
    return {};
}

bool saysItsVersion(const std::string& program, const std::string& version) {
    QProcess trial;
    trial.setStandardInputFile(QProcess::nullDevice());
    trial.start(QString::fromStdString(program), {"--version"});
    if (!trial.waitForFinished(trialMilliseconds)) {
        trial.kill();
        trial.waitForFinished();
        return false;
    }
    return trial.exitStatus() == QProcess::NormalExit && trial.exitCode() == 0 &&
           trial.readAllStandardOutput().trimmed() == QByteArray::fromStdString("vantoro " + version);
}

} // namespace

Outcome<UpdateError> prepareRelease(const Descriptor& archive, const ExpectedRelease& expected,
                                    const InstalledCopy& copy, const std::string& folder,
                                    const std::function<bool(double share)>& progress) {
    if (!isSignedBy(expected.publicKey, expected.signature, archive.number()))
        return sparkleError(SparkleCode::signature, "the archive's signature does not match");
    if (::mkdir(folder.c_str(), 0700) != 0)
        return fileError(SparkleCode::installationWriteNoPermission, folder, errno);
    if (const auto unpacked = unpackArchive(archive.number(), folder, progress); unpacked.failed()) {
        const UnpackFault& fault = unpacked.fault();
        return fault.systemError == 0 ? sparkleError(SparkleCode::unarchiving, fault.text)
                                      : fileError(SparkleCode::unarchiving, fault.text, fault.systemError);
    }
    if (const auto checked = check(folder, expected); checked.failed())
        return sparkleError(SparkleCode::validation, checked.fault());
    if (const auto taken = takeRightsOver(folder, copy.folder()); taken.failed())
        return fileError(SparkleCode::installationWriteNoPermission, taken.fault(), errno);
    // What takes the place of a working copy has to be on the disk before it does.
    if (!writeOut(folder))
        return fileError(SparkleCode::unarchiving, folder, errno);
    const std::string program = folder + copy.program().substr(copy.folder().size());
    if (!saysItsVersion(program, expected.version))
        return sparkleError(SparkleCode::installation, "the new version does not run here");
    return {};
}

} // namespace vantoro
