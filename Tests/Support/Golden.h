// Texts that are compared whole with a file. To write the files anew after a wanted change, run the tests with
// VANTORO_WRITE_GOLDEN=1 and read what `git diff` says.
#pragma once

#include "Support/Testing.h"

namespace vantoro::testing {

/// Empty for a file that cannot be read.
inline std::string fileText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// `file` is relative to Tests/Fixtures.
inline void expectGolden(const std::string& file, const std::string& actual) {
    const std::string path = VANTORO_FIXTURES "/" + file;
    if (std::getenv("VANTORO_WRITE_GOLDEN") != nullptr)
        std::ofstream(path, std::ios::binary) << actual;
    EXPECT_EQ(fileText(path), actual) << file;
}

} // namespace vantoro::testing
