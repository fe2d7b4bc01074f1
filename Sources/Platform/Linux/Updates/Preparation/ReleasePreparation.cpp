#include "Platform/Linux/Updates/Preparation/ReleasePreparation.h"

#include "Model/Text/VersionOrder.h"
#include "Platform/Linux/Updates/Copy/CopyRights.h"
#include "Platform/Linux/Updates/Copy/UpdateErrors.h"
#include "Platform/Linux/Updates/Preparation/ArchiveSignature.h"
#include "Platform/Linux/Updates/Preparation/ArchiveUnpacker.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <QProcess>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr int trialMilliseconds = 20'000;

/// The whole of what is written to the disk that the folder lies on.
bool writeOut(const std::string& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor && ::syncfs(descriptor.number()) == 0;
}

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

std::optional<UpdateError> prepareRelease(const Descriptor& archive, const ExpectedRelease& expected,
                                          const InstalledCopy& copy, const std::string& folder,
                                          const std::function<bool(double share)>& progress) {
    if (!isSignedBy(expected.publicKey, expected.signature, archive.number()))
        return sparkleError(SparkleCode::signature, "the archive's signature does not match");
    if (::mkdir(folder.c_str(), 0700) != 0)
        return fileError(SparkleCode::installationWriteNoPermission, folder, errno);
    if (const auto fault = unpackArchive(archive.number(), folder, progress))
        return fault->systemError == 0 ? sparkleError(SparkleCode::unarchiving, fault->text)
                                       : fileError(SparkleCode::unarchiving, fault->text, fault->systemError);
    if (const auto fault = faultIn(folder, expected))
        return sparkleError(SparkleCode::validation, *fault);
    if (const auto path = takeRightsOver(folder, copy.folder()))
        return fileError(SparkleCode::installationWriteNoPermission, *path, errno);
    // What takes the place of a working copy has to be on the disk before it does.
    if (!writeOut(folder))
        return fileError(SparkleCode::unarchiving, folder, errno);
    const std::string program = folder + copy.program().substr(copy.folder().size());
    if (!saysItsVersion(program, expected.version))
        return sparkleError(SparkleCode::installation, "the new version does not run here");
    return std::nullopt;
}

} // namespace vantoro
