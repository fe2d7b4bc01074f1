// The process stream in arbitrary pieces, its blocks, and the path list. Cutting must not depend on where pieces end.

#include "Model/Processes/TopStream.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace vantoro;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t piece = 1 + data[0];
    std::vector<std::vector<std::string>> blocks;
    const auto take = [&blocks](const std::vector<std::string>& lines) { blocks.push_back(lines); };
    TopBlockCutter cutter;
    for (std::size_t at = 0; at < text.size(); at += piece)
        cutter.ingest(text.substr(at, piece), take);
    const bool isAscii = std::ranges::all_of(text, [](unsigned char byte) { return byte < 0x80; });
    std::vector<std::vector<std::string>> wholeBlocks;
    TopBlockCutter().ingest(text, [&wholeBlocks](const auto& lines) { wholeBlocks.push_back(lines); });
    if (isAscii && blocks != wholeBlocks)
        std::abort();
    for (const std::vector<std::string>& lines : blocks)
        for (const TopRow& row : parseBlock(lines, 1).rows)
            if (row.command.empty() || row.cpuPercent != row.cpuPercent ||
                validUtf8Length(row.command) != row.command.size() || validUtf8Length(row.user) != row.user.size())
                std::abort();
    if (const auto last = lastBlock(text))
        parseBlock(*last, 1);
    parsePathList(text);
    parseOrigin(text);
    return 0;
}
