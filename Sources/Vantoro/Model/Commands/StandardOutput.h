// What the program prints on standard output, with an eye on whether it gets there.
#pragma once

#include "Model/Live/Log.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

namespace vantoro {

class StandardOutput {
public:
    /// One line at once, so that a table over time is seen as it grows; nothing in it steers the terminal.
    void line(std::string_view line) { write(terminalText(line) + '\n'); }

    /// Text of our own, as it is.
    void text(std::string_view text) { write(text); }

    bool hasFailed() const { return reason_ != 0; }

    /// The program's exit status: a failure, with its complaint, when something could not be written.
    int status() const {
        if (!hasFailed())
            return EXIT_SUCCESS;
        complain("standard output cannot be written: " + std::system_category().message(reason_));
        return EXIT_FAILURE;
    }

private:
    void write(std::string_view bytes) {
        if (hasFailed())
            return;
        errno = 0;
        if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
            reason_ = errno != 0 ? errno : EIO;
    }

    int reason_ = 0;
};

} // namespace vantoro
