// What comes with an update as text: release notes, versions, the records in the settings.

#include "Model/Text/Release.h"
#include "Model/Text/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace vantoro;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string notes = plainNotes(text);
    if (notes.size() > 4000 || validUtf8Length(notes) != notes.size() || notes.find('\0') != std::string::npos)
        std::abort();
    const std::string_view one = text.substr(0, size / 2);
    const std::string_view other = text.substr(size / 2);
    const int order = compareVersions(one, other);
    const int reverse = compareVersions(other, one);
    if ((order > 0) != (reverse < 0) || (order == 0) != (reverse == 0) || compareVersions(text, text) != 0)
        std::abort();
    if (const auto release = decodedRelease(text); release && decodedRelease(encoded(*release)) != release)
        std::abort();
    if (const auto marker = decodedRelaunch(text); marker && decodedRelaunch(encoded(*marker)) != marker)
        std::abort();
    return 0;
}
