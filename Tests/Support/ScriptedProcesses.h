// Processes that live, ignore being asked, start others and end as a test says.
#pragma once

#include "Platform/ProcessControl.h"

#include "Support/Testing.h"

#include <map>
#include <utility>

namespace vantoro::testing {

class ScriptedProcesses : public ProcessControl {
public:
    struct Process {
        LivingProcess is;
        bool ignoresAsking = false;
        bool isRefused = false;
        std::string folder = {};
    };

    std::int32_t ownPid() const override { return 4242; }
    void list(std::vector<LivingProcess>& list) override {
        list.clear();
        for (const auto& [pid, process] : alive)
            list.push_back(process.is);
    }
    std::optional<LivingProcess> find(std::int32_t pid) override {
        const auto found = alive.find(pid);
        return found != alive.end() ? std::optional(found->second.is)
               : knowsAll           ? std::nullopt
                                    : std::optional(LivingProcess{.pid = pid, .birth = 1});
    }
    std::string folder(const LivingProcess& process) override {
        const auto found = alive.find(process.pid);
        return found != alive.end() ? found->second.folder : std::string();
    }
    QuitAnswer end(const LivingProcess& process, QuitManner manner) override {
        sent.emplace_back(process.pid, manner);
        const auto found = alive.find(process.pid);
        if (found == alive.end() || found->second.is.birth != process.birth)
            return QuitAnswer::gone;
        if (found->second.isRefused)
            return QuitAnswer::refused;
        if (manner == QuitManner::force || !found->second.ignoresAsking)
            alive.erase(found);
        return QuitAnswer::reached;
    }

    Process& start(std::int32_t pid, std::int32_t parentPid = 1, std::uint64_t birth = 1) {
        knowsAll = true;
        return alive[pid] = {.is = {.pid = pid, .parentPid = parentPid, .birth = birth}};
    }

    std::map<std::int32_t, Process> alive;
    /// Until a test starts one, every process that is asked for is alive.
    bool knowsAll = false;
    std::vector<std::pair<std::int32_t, QuitManner>> sent;
};

} // namespace vantoro::testing
