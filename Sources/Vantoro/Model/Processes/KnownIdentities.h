// The identities of a recording's rows, shared between its lines: a process is the same one in nearly all of them.
#pragma once

#include "Model/Records/ProcessIdentity.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace vantoro {

class KnownIdentities {
public:
    /// To be called once for each line; now and then forgets those that have not been met for long.
    void startLine() {
        const bool isCrowded = identities_.size() > mostIdentities;
        if (++lineCount_ % rememberedLines != 0 && !isCrowded)
            return;
        std::erase_if(identities_, [&](const auto& entry) {
            return isCrowded || entry.second.lastLine + rememberedLines < lineCount_;
        });
    }

    /// The row's identity: the very one that was given before for this process, where nothing about it has changed.
    const SharedProcessIdentity& of(const ProcessIdentity& row) {
        Known& known = identities_[row.pid];
        if (known.lastLine == 0 || *known.identity != row)
            known.identity = SharedProcessIdentity(row);
        known.lastLine = lineCount_;
        return known.identity;
    }

private:
    /// A process that has been away for this many lines has most likely ended.
    static constexpr std::size_t rememberedLines = 128;
    static constexpr std::size_t mostIdentities = 4096;

    struct Known {
        SharedProcessIdentity identity;
        std::size_t lastLine = 0;
    };

    std::size_t lineCount_ = 0;
    std::unordered_map<std::int32_t, Known> identities_;
};

} // namespace vantoro
