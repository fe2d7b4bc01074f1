// Where the user's choices are kept, and what is made of a store that is broken or another's.
#include "Model/Live/SensorHub.h"

#include "Support/Testing.h"

#include <QTemporaryDir>

namespace vantoro {
namespace {

using namespace std::chrono_literals;

TEST(SensorHubIntervals, SettingAndEnvironment) {
    EXPECT_EQ(timerInterval({}, 0.4), 400ms);
    EXPECT_EQ(timerInterval("0.5", 2), 500ms);
    for (const char* const bad : {" 0.5", "fast", "", "0", "-3", "nan", "1e999"})
        EXPECT_EQ(timerInterval(bad, 2), 2000ms) << bad;
    EXPECT_EQ(timerInterval("1e300", 2), 24h);
    EXPECT_EQ(processInterval(0.4), 1);
    EXPECT_EQ(processInterval(2.5), 3);
    EXPECT_EQ(processInterval(1e300), 86400);
}

TEST(Settings, DefaultsAndMalformedValues) {
    const QTemporaryDir folder;
    const std::string file = folder.filePath("settings.ini").toStdString();
    const std::string broken = folder.filePath("broken.ini").toStdString();
    std::ofstream(broken) << "\xFF\xFE\n[General]\nsampleInterval=nan\nhistoryMinutes=-1e999\nsmoothUpdates=perhaps\n"
                          << std::string(1 << 20, 'x');
    for (const std::string& name : {file, broken}) {
        const Settings settings(name);
        EXPECT_EQ(settings.value(Setting::sampleInterval), 2);
        EXPECT_TRUE(settings.value(Setting::smoothUpdates) && settings.value(Setting::spinRotors));
        EXPECT_FALSE(settings.value(Setting::menuBarShowsRPM));
        EXPECT_EQ(settings.value(Setting::temperatureUnit), "C");
        EXPECT_EQ(settings.value(Setting::historyMinutes), 30);
        EXPECT_EQ(settings.value(Setting::processMonitorMode), "auto");
        EXPECT_EQ(settings.value(Setting::appearance), "system");
    }
    {
        Settings settings(file);
        settings.store(Setting::sampleInterval, 0.25);
        settings.store(Setting::smoothUpdates, false);
        settings.store(Setting::temperatureUnit, "F");
    }
    const Settings again(file);
    EXPECT_EQ(again.value(Setting::sampleInterval), 0.25);
    EXPECT_FALSE(again.value(Setting::smoothUpdates));
    EXPECT_EQ(SettingsFormatContext(again).text("temperatureUnit"), "F");
}

/// A store as "defaults" fills it: keys as they are, values of several kinds.
class KeptStore : public SettingsStore {
public:
    explicit KeptStore(std::map<std::string, Value>& values) : values_(values) {}
    std::optional<Value> value(const std::string& key) const override {
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void store(const std::string& key, const Value& value) override { values_[key] = value; }
    void forget(const std::string& key) override { values_.erase(key); }
    void sync() override {}

private:
    std::map<std::string, Value>& values_;
};

TEST(Settings, TheSystemsOwnStoreHoldsKeysAndKindsAsTheyAre) {
    std::map<std::string, SettingsStore::Value> values{{"sampleInterval", std::string("0.5")},
                                                       {"spinRotors", 0.0},
                                                       {"smoothUpdates", false},
                                                       {"historyMinutes", 15.5}};
    Settings settings(std::make_unique<KeptStore>(values));
    EXPECT_EQ(settings.value(Setting::sampleInterval), 0.5);
    EXPECT_FALSE(settings.value(Setting::spinRotors));
    EXPECT_FALSE(settings.value(Setting::smoothUpdates));
    EXPECT_EQ(settings.value(Setting::historyMinutes), 15.5);
    settings.store(Setting::menuBarShowsRPM, true);
    settings.store(Setting::sampleInterval, 2);
    settings.store(Setting::appearance, "dark");
    settings.storeText("vantoro.updates.available", "{}");
    settings.forget("spinRotors");
    const std::map<std::string, SettingsStore::Value> expected{{"sampleInterval", 2.0},
                                                               {"smoothUpdates", false},
                                                               {"historyMinutes", 15.5},
                                                               {"menuBarShowsRPM", true},
                                                               {"appearance", std::string("dark")},
                                                               {"vantoro.updates.available", std::string("{}")}};
    EXPECT_EQ(values, expected);
}

} // namespace
} // namespace vantoro
