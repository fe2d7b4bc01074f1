// Checks a downloaded release and unpacks it into a folder beside the copy it is to replace. Started by the program's
// updater; prints how far it is and what came of it.

#include "Platform/Linux/Updates/Copy/PreparationProtocol.h"
#include "Platform/Linux/Updates/Preparation/ReleasePreparation.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <vector>

using namespace vantoro;

namespace {

constexpr int usageFault = 2;

bool printLine(const std::string& line) {
    return std::fprintf(stdout, "%s\n", line.c_str()) >= 0 && std::fflush(stdout) == 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv, argv + argc);
    if (words.size() != 9) {
        std::fprintf(stderr,
                     "usage: vantoro-update ARCHIVE KEY SIGNATURE VERSION BUILD CURRENT-BUILD PROGRAM FOLDER\n");
        return usageFault;
    }
    const Descriptor archive(::open(words[1].c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    int shownPercent = 0;
    const auto progress = [&shownPercent](double share) {
        const int percent = static_cast<int>(share * 100);
        if (percent <= shownPercent)
            return true;
        shownPercent = percent;
        // Nobody listens any more: the program has ended.
        return printLine(preparationProgressLine(share));
    };
    const std::string& folder = words[8];
    const auto prepared = prepareRelease(archive,
                                         {.publicKey = words[2],
                                          .signature = words[3],
                                          .version = words[4],
                                          .build = words[5],
                                          .currentBuild = words[6]},
                                         InstalledCopy(words[7]), folder, progress);
    const PreparationOutcome outcome =
        prepared.failed() ? PreparationOutcome(prepared.fault()) : PreparationOutcome(folder);
    return printLine(preparationOutcomeLine(outcome)) ? EXIT_SUCCESS : EXIT_FAILURE;
}
