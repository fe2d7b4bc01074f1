#include "Platform/System.h"

#include <cinttypes>
#include <cstdio>
#include <malloc.h>
#include <memory>
#include <string_view>
#include <sys/mman.h>
#include <syslog.h>

namespace vantoro {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Lets go of the program's and the libraries' instructions: they are clean copies of their files, and the few that are
/// still needed come back from the page cache when they are. Executable mappings only: others hold relocated data.
void releaseInstructions() {
    const std::unique_ptr<std::FILE, FileCloser> maps(std::fopen("/proc/self/maps", "re"));
    if (!maps)
        return;
    char line[4400]; // an address range, and a path of at most 4096 bytes
    while (std::fgets(line, sizeof line, maps.get()) != nullptr) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char access[5] = "";
        char path = 0;
        const int fields =
            std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s %*s %*s %*s %c", &begin, &end, access, &path);
        if (fields == 4 && std::string_view(access) == "r-xp" && path == '/')
            ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
    }
}

} // namespace

void releaseUnusedMemory() {
    ::malloc_trim(0);
    releaseInstructions();
}

void writeSystemLog(const std::string& category, const std::string& message) {
    static const bool isOpen = [] {
        ::openlog("vantoro", LOG_PID, LOG_USER);
        return true;
    }();
    (void)isOpen;
    ::syslog(LOG_DEBUG, "%s: %s", category.c_str(), message.c_str());
}

std::unique_ptr<SettingsStore> systemSettingsStore() {
    return nullptr;
}

} // namespace vantoro
