#include "Model/Readers/SMCReader.h"

#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

using testing::ScriptedSMC;

class SMCReaderTest : public ::testing::Test {
protected:
    SMCReaderTest() { smc_use(smc); }
    ~SMCReaderTest() override { smc_use(nullptr); }

    SMCReader make(bool simulatesFanless = false, SensorTrust trust = SensorTrust::manyAndNoisy) {
        return SMCReader({.simulatesFanless = simulatesFanless, .trust = trust, .pause = [this](int milliseconds) {
                              paused += milliseconds;
                          }});
    }
    void addKeys(const std::string& prefix, int count) {
        for (int i = 0; i < count; ++i)
            smc->setFloat(prefix + static_cast<char>('0' + i / 36) +
                              static_cast<char>(i % 36 < 10 ? '0' + i % 36 : 'a' + i % 36 - 10),
                          40 + i * 0.25);
    }

    std::shared_ptr<ScriptedSMC> smc = std::make_shared<ScriptedSMC>();
    int paused = 0;
};

TEST_F(SMCReaderTest, SortsKeysIntoFamiliesInTheirOrder) {
    for (const char* const key : {"Tp09", "TB1T", "Tg05", "Ts0P", "Tp01", "Te05", "TC0P", "PSTR"})
        smc->setFloat(key, 40);
    smc->set("Tp0U", "sp78", {40, 0});
    smc->setFloat("Tp\xC3\xA9", 40);
    smc->setFloat("Tp07", 40);
    smc->failingCalls = {{"Tp07", SMCCommand::getKeyAtIndex}};
    SMCReader reader = make();
    EXPECT_EQ(reader.keys(SensorFamily::chip), (std::vector<std::string>{"Tp09", "Tp01"}));
    EXPECT_EQ(reader.keys(SensorFamily::graphics), std::vector<std::string>{"Tg05"});
    EXPECT_EQ(reader.keys(SensorFamily::battery), std::vector<std::string>{"TB1T"});
    EXPECT_EQ(reader.keys(SensorFamily::enclosure), std::vector<std::string>{"Ts0P"});
    EXPECT_EQ(reader.sensorCount(), 5);

    const SMCReader withMiddleTier({.measuresCoresUnderTs = true});
    EXPECT_EQ(withMiddleTier.keys(SensorFamily::chip), (std::vector<std::string>{"Tp09", "Ts0P", "Tp01"}));
    EXPECT_TRUE(withMiddleTier.keys(SensorFamily::enclosure).empty());
}

TEST_F(SMCReaderTest, FamiliesAreCappedAndTheReserveStandsInForAShortDie) {
    const std::tuple<int, int, std::size_t, char> cases[] = {
        {3, 4, 4, 'e'}, {3, 3, 3, 'p'}, {4, 9, 4, 'p'}, {0, 200, 128, 'e'}, {200, 0, 128, 'p'}};
    for (const auto& [die, reserve, expected, kind] : cases) {
        smc->keys.clear();
        addKeys("Tp", die);
        addKeys("Te", reserve / 2);
        addKeys("Tf", reserve - reserve / 2);
        SMCReader reader = make();
        EXPECT_EQ(reader.keys(SensorFamily::chip).size(), expected);
        EXPECT_EQ(reader.keys(SensorFamily::chip)[0][1], kind);
    }
    for (const char* const prefix : {"Tg", "TB", "Ts"})
        addKeys(prefix, 150);
    SMCReader reader = make();
    EXPECT_EQ(reader.keys(SensorFamily::graphics).size(), 64U);
    EXPECT_EQ(reader.keys(SensorFamily::battery).size(), 150U);
    EXPECT_EQ(reader.keys(SensorFamily::enclosure).size(), 48U);
}

TEST_F(SMCReaderTest, FanCountIsTriedThreeTimesThenProbedFor) {
    const auto found = [this] {
        paused = 0;
        SMCReader reader = make();
        EXPECT_EQ(reader.cooling(), reader.reportsNoFans() ? Cooling::passive : Cooling::fans);
        return std::tuple(reader.fanCount(), reader.reportsNoFans(), paused);
    };
    const auto count = [this](std::uint8_t fans) { smc->set("FNum", "ui8 ", {fans}); };
    count(2);
    EXPECT_EQ(found(), std::tuple(2, false, 0));
    count(0);
    EXPECT_EQ(found(), std::tuple(0, true, 0));
    count(200);
    EXPECT_EQ(found(), std::tuple(10, false, 0)) << "more than there are keys for";
    smc->set("FNum", "si8 ", {0xFD});
    EXPECT_EQ(found(), std::tuple(0, true, 0));
    count(1);
    smc->failingReads["FNum"] = 2;
    // Discovery looks at the key once before.
    ++smc->failingReads["FNum"];
    EXPECT_EQ(found(), std::tuple(1, false, 40));

    smc->setFloat("F0Ac", 0);
    smc->setFloat("F3Ac", 1200);
    smc->setFloat("F8Ac", 1200);
    for (const double unusable : {std::numeric_limits<double>::infinity(), std::nan(""), 1e30, -1e30}) {
        smc->setFloat("FNum", unusable);
        EXPECT_EQ(found(), std::tuple(4, false, 40)) << unusable;
    }
    smc->keys.clear();
    EXPECT_EQ(found(), std::tuple(0, false, 40)) << "nothing is known of its fans";
}

TEST_F(SMCReaderTest, ReadsFansWithWhatIsKnownOfEach) {
    smc->set("FNum", "ui8 ", {4});
    smc->setFloat("F0Ac", 1200.5);
    smc->setFloat("F0Mn", 1000);
    smc->setFloat("F0Mx", 5000);
    smc->setFloat("F0Tg", 1300);
    smc->setFloat("F1Ac", std::nan(""));
    smc->setFloat("F2Ac", 0);
    smc->setFloat("F3Ac", 2000);
    SMCReader reader = make();
    EXPECT_EQ(reader.readFans(),
              (std::vector<FanReading>{{.index = 0, .rpm = 1200.5, .minRPM = 1000, .maxRPM = 5000, .targetRPM = 1300},
                                       {.index = 2, .rpm = 0, .minRPM = 0, .maxRPM = 1, .targetRPM = 0},
                                       {.index = 3, .rpm = 2000, .minRPM = 0, .maxRPM = 2000, .targetRPM = 2000}}));
    EXPECT_TRUE(make(true).readFans().empty());
    EXPECT_TRUE(make(true).reportsNoFans());
}

TEST_F(SMCReaderTest, KeepsTheLastGoodOfEachFamily) {
    const std::vector<double> die{50, 51, 52, 53};
    smc->setFamily("Tp", die);
    smc->setFamily("Tg", {40, 41, 42});
    smc->setFamily("TB", {30, 32});
    smc->setFamily("Ts", {25});
    SMCReader reader = make();
    const Temperatures good = reader.readTemperatures();
    EXPECT_EQ(good, (Temperatures{.soc = 53, .socMean = 51.5, .gpu = 42, .battery = 31, .enclosure = 25}));
    smc->setFamily("Tp", {60, 60, 60, 60});
    smc->setFamily("TB", {0, 140});
    smc->remove("Ts00");
    smc->remove("Tg00");
    EXPECT_EQ(reader.readTemperatures(), good);
    smc->setFamily("Tg", {43, 41, 42});
    EXPECT_EQ(reader.readTemperatures().gpu, 43) << "the other families are not held back";

    for (const int failures : {2, 3}) {
        smc->setFamily("Tp", {70, 71, 72, 0});
        smc->failingReads["Tp00"] = failures;
        EXPECT_EQ(reader.readTemperatures().soc, failures == 2 ? 72 : 53) << "three looks, not more";
        smc->setFamily("Tp", die);
        smc->failingReads.clear();
        reader.readTemperatures();
    }
}

TEST_F(SMCReaderTest, WhatTheTemperaturesWereMadeOfIsNotReadAgain) {
    smc->setFamily("Tp", {61, 61, 61, 61, 61});
    SMCReader reader = make(false, SensorTrust::fewAndHonest);
    EXPECT_EQ(reader.readTemperatures().soc, 61);
    EXPECT_EQ(reader.readDieSensors().size(), 5U);
    reader.readTemperatures();
    const int calls = smc->calls;
    EXPECT_EQ(reader.latestDieSensors().size(), 5U);
    EXPECT_TRUE(reader.latestGPUSensors().empty());
    EXPECT_EQ(smc->calls, calls) << "what the temperatures were made of is not read again";
}

/// What stands in a controller's place.
class StandIn : public ScriptedSMC {
public:
    bool isController() const override { return false; }
    std::string fanName(int fan) const override { return fan == 0 ? "CPU fan" : ""; }
    std::uint64_t generation() override { return count; }

    std::uint64_t count = 1;
};

class StandInTest : public ::testing::Test {
protected:
    StandInTest() {
        standIn->sensorTrust = SensorTrust::fewAndHonest;
        smc_use(standIn);
    }
    ~StandInTest() override { smc_use(nullptr); }

    Cooling look(SMCReader& reader, int times = 1) {
        for (int time = 0; time < times; ++time) {
            reader.refresh();
            reader.readFans();
            reader.readTemperatures();
        }
        return reader.cooling();
    }

    std::shared_ptr<StandIn> standIn = std::make_shared<StandIn>();
};

TEST_F(StandInTest, SpeaksOnlyOfWhatItCanTell) {
    standIn->setFloat("PSTR", 9);
    SMCReader reader(SMCReader::Options::of(standIn, [](int) {}));
    const auto devicesChange = [&](const auto& change) {
        change();
        ++standIn->count;
    };
    EXPECT_EQ(look(reader), Cooling::load);
    devicesChange([&] { standIn->setFamily("Tp", {45}); });
    EXPECT_EQ(look(reader), Cooling::heat);
    devicesChange([&] { standIn->set("FNum", "ui8 ", {0}); });
    EXPECT_EQ(look(reader), Cooling::passive);
    devicesChange([&] {
        standIn->set("FNum", "ui8 ", {12});
        standIn->setFloat("F0Ac", 1200);
        standIn->setFloat("FBAc", 900);
    });
    EXPECT_EQ(look(reader), Cooling::heat);
    EXPECT_EQ(reader.readFans(),
              (std::vector<FanReading>{{.index = 0, .rpm = 1200, .targetRPM = 1200, .name = "CPU fan"},
                                       {.index = 11, .rpm = 900, .targetRPM = 900}}));
    standIn->setFloat("F0Mx", 4000);
    standIn->set("F0MS", "ui8 ", {3});
    EXPECT_EQ(look(reader), Cooling::heat) << "a ceiling without a floor";
    EXPECT_TRUE(reader.readFans()[0].learnsLimits);
    standIn->setFloat("F0Mn", 800);
    standIn->set("F0MS", "ui8 ", {2});
    EXPECT_EQ(look(reader), Cooling::fans);
    EXPECT_EQ(reader.readFans()[0], (FanReading{.index = 0,
                                                .rpm = 1200,
                                                .minRPM = 800,
                                                .maxRPM = 4000,
                                                .targetRPM = 1200,
                                                .name = "CPU fan",
                                                .hasLearnedLimits = true}));
    standIn->remove("F0Mx");
    EXPECT_EQ(look(reader, 4), Cooling::fans) << "a reading that fails now and then";
    EXPECT_EQ(look(reader), Cooling::heat);
    standIn->remove("Tp00");
    EXPECT_EQ(reader.readTemperatures().soc, 0) << "what is gone is gone";
    EXPECT_EQ(look(reader, 5), Cooling::load);
}

TEST_F(StandInTest, DevicesThatComeAndGoAreFoundAnew) {
    standIn->refusesToOpen = true;
    SMCReader reader(SMCReader::Options::of(standIn, [](int) {}));
    EXPECT_EQ(look(reader), Cooling::load);
    EXPECT_FALSE(reader.isOpen());
    standIn->refusesToOpen = false;
    standIn->setFamily("Tp", std::vector<double>(99, 45));
    look(reader);
    EXPECT_FALSE(reader.isOpen()) << "nothing is looked for unless it says so";
    ++standIn->count;
    look(reader);
    EXPECT_EQ(reader.keys(SensorFamily::chip).size(), 99u);
    const int opened = standIn->opened;
    standIn->keys.clear();
    ++standIn->count;
    EXPECT_EQ(look(reader), Cooling::heat);
    EXPECT_EQ(reader.readTemperatures(), Temperatures());
    EXPECT_EQ(standIn->opened, opened + 1);
    EXPECT_EQ(standIn->closed, standIn->opened - 1);
}

TEST_F(StandInTest, EveryPackageCounts) {
    for (int sensor = 0; sensor < 200; ++sensor)
        standIn->setFloat(std::string("Tp") + static_cast<char>('A' + sensor / 20) +
                              static_cast<char>('A' + sensor % 20),
                          sensor < 199 ? 40 : 96);
    SMCReader reader(SMCReader::Options::of(standIn, [](int) {}));
    EXPECT_EQ(reader.readTemperatures().soc, 96);
}

TEST_F(SMCReaderTest, WithoutAControllerThereIsNothing) {
    smc->setFamily("Tp", {50, 51, 52, 53});
    smc->set("FNum", "ui8 ", {2});
    smc->refusesToOpen = true;
    SMCReader reader = make(true);
    EXPECT_FALSE(reader.isOpen());
    EXPECT_FALSE(reader.reportsNoFans());
    EXPECT_TRUE(reader.readFans().empty());
    EXPECT_EQ(reader.readTemperatures(), Temperatures{});
    EXPECT_EQ(reader.readPower(), PowerReading{});
    EXPECT_TRUE(reader.measuringSensors({"Tp00"}).empty());
    EXPECT_EQ(smc->calls, 0);
    smc->refusesToOpen = false;
    { const SMCReader open = make(); }
    EXPECT_EQ(smc->closed, 1);
}

} // namespace
} // namespace vantoro
