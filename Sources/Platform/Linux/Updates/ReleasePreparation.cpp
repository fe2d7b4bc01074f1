#include "Platform/Linux/Updates/ReleasePreparation.h"

#include "Model/VersionOrder.h"
#include "Platform/Linux/Updates/ArchiveSignature.h"
#include "Platform/Linux/Updates/ArchiveUnpacker.h"
#include "Platform/Linux/Updates/UpdateErrors.h"

#include <filesystem>
#include <fmt/format.h>
#include <QProcess>

namespace vantoro {

namespace {

constexpr int trialMilliseconds = 20'000;

/// Removed with everything in it, unless it is kept.
class StagingFolder {
public:
    explicit StagingFolder(std::string path) : path_(std::move(path)) {}
    ~StagingFolder() {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string keep() { return std::exchange(path_, {}); }

private:
    std::string path_;
};

/// What is wrong with the unpacked release, or nothing.
std::optional<std::string> faultIn(const std::string& folder, const ExpectedRelease& expected) {
    const auto manifest = manifestOfWholeCopy(folder);
    if (!manifest)
        return "its files are not those that its manifest names";
    if (manifest->version != expected.version || manifest->build != expected.build)
        return fmt::format("it is {} ({}), not {} ({})", manifest->version, manifest->build, expected.version,
                           expected.build);
    if (compareVersions(manifest->build, expected.currentBuild) <= 0)
        return fmt::format("build {} is not newer", manifest->build);
    return std::nullopt;
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

std::variant<std::string, UpdateError> prepareRelease(const Descriptor& archive, const ExpectedRelease& expected,
                                                      const InstalledCopy& copy,
                                                      const std::function<bool(double share)>& progress) {
    if (!isSignedBy(expected.publicKey, expected.signature, archive.number()))
        return sparkleError(SparkleCode::signature, "the archive's signature does not match");
    StagingFolder staging(copy.makeStagingFolder());
    if (staging.path().empty())
        return sparkleError(SparkleCode::installationWriteNoPermission, "no folder can be made beside the copy");
    if (const auto fault = unpackArchive(archive.number(), staging.path(), progress))
        return sparkleError(SparkleCode::unarchiving, *fault);
    if (const auto fault = faultIn(staging.path(), expected))
        return sparkleError(SparkleCode::validation, *fault);
    const std::string program = staging.path() + copy.program().substr(copy.folder().size());
    if (!saysItsVersion(program, expected.version))
        return sparkleError(SparkleCode::installation, "the new version does not run here");
    return staging.keep();
}

} // namespace vantoro
