// A stage whose program updates itself, with an engine that a test drives.
#pragma once

#include "Model/Updates/Updates.h"

#include "Support/ScriptedUpdateEngine.h"
#include "Views/Stage.h"

namespace vantoro::testing {

struct UpdatingStage : Stage {
    /// 12:00 UTC, and what the controller's clock stands at.
    static constexpr double noon = 1772366400;

    explicit UpdatingStage(Theme::Appearance appearance = Theme::Appearance::dark, bool hasFeed = true,
                           SystemKind ofSystem = SystemKind::macos)
        : Stage(appearance), system(ofSystem) {
        if (!hasFeed)
            engine->feed.reset();
        context.updates = &updates;
        updates.start();
        engine->calls.clear();
    }

    /// What the controller put off happens now.
    void runLater() {
        for (const auto& action : std::exchange(later, {}))
            action();
    }
    /// The engine finds version 1.3, and nobody has asked for it to be installed.
    void find(const std::optional<std::string>& notes =
                  "<ul><li>Knows machines with three fans.</li><li>Starts faster.</li></ul>") {
        engine->find({.versionString = "130",
                      .displayVersionString = "1.3",
                      .itemDescription = notes,
                      .contentLength = 10'000'000});
    }

    SystemKind system;
    std::vector<std::function<void()>> later;
    std::shared_ptr<ScriptedUpdateEngine> engine = std::make_shared<ScriptedUpdateEngine>();
    Updates updates{engine,
                    settings,
                    {.system = system,
                     .now = [] { return noon; },
                     .after = [this](double, std::function<void()> action) { later.push_back(std::move(action)); }}};
};

} // namespace vantoro::testing
