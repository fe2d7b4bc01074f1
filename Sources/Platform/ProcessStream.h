// Which programs print the process stream and the path list.
#pragma once

#include <string>
#include <vector>

namespace vantoro {

struct ProgramCommand {
    /// Full path of the program.
    std::string program;
    std::vector<std::string> arguments;

    bool operator==(const ProgramCommand&) const = default;
};

class ProcessStream {
public:
    virtual ~ProcessStream() = default;

    /// Prints `samples` blocks (0: without end), `intervalSeconds` apart, of the `rows` busiest processes each.
    virtual ProgramCommand stream(int samples, int intervalSeconds, int rows) const = 0;
    /// Prints one line per process: its pid and its executable's path.
    virtual ProgramCommand pathList() const = 0;

    /// One block of the stream, as short as the program allows: to see whether it runs at all.
    virtual ProgramCommand trial() const { return stream(1, 1, 1); }
    /// What people know the two programs by.
    virtual std::string streamName() const { return trial().program; }
    virtual std::string pathListName() const { return pathList().program; }
};

} // namespace vantoro
