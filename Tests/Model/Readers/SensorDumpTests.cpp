#include "Model/Readers/SensorDump.h"

#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

using testing::ScriptedSMC;
using Unknown = SensorDump::Unknown;

class SensorDumpTest : public ::testing::Test {
protected:
    SensorDumpTest() { smc_use(smc); }
    ~SensorDumpTest() override { smc_use(nullptr); }

    std::string text;
    std::vector<int> pauses;
    PrintLine print = [this](std::string_view line) { text += std::string(line) + '\n'; };
    SMCReader::Options reader{.pause = [this](int milliseconds) { pauses.push_back(milliseconds); }};
    std::shared_ptr<ScriptedSMC> smc = std::make_shared<ScriptedSMC>();
};

TEST_F(SensorDumpTest, PrintsWhatTheControllerOffersAndWhatTheReaderMakesOfIt) {
    smc->setFamily("Tp", {50.25, 58.44, 0, 150, 41, 42, std::nan("")});
    smc->setFamily("Tg", {150, 0});
    smc->setFamily("TC", {44});
    smc->setFamily("TB", {30.5});
    smc->set("Ts0P", "sp78", {40, 0});
    smc->set("FNum", "ui8 ", {2});
    smc->setFloat("F0Ac", 1234.9);
    smc->setFloat("F0Mn", 1000);
    smc->setFloat("F0Mx", 5000);
    smc->setFloat("F1Ac", 2000);
    smc->setFloat("PSTR", 12.345);
    smc->setFloat("PPBR", 7);
    SensorDump::run(reader, Unknown::zero, print);
    EXPECT_EQ(text, R"(SMC keys: 19

Tp: 7 keys, 4 plausible, max 58.4°C
   hottest: Tp03=150.0  Tp01=58.4  Tp00=50.2  Tp05=42.0  Tp04=41.0
Te: none found
Tf: none found
Tg: 2 keys, 0 plausible, max 0.0°C
   hottest: Tg00=150.0  Tg01=0.0
TB: 1 keys, 1 plausible, max 30.5°C
   hottest: TB00=30.5
Ts: none found
TC: 1 keys, 1 plausible, max 44.0°C
   hottest: TC00=44.0

SMCReader results → SoC 58.4  GPU 0.0  battery 30.5  enclosure 0.0
Fan 0: 1234 rpm  min 1000  max 5000  target 1234
Fan 1: 2000 rpm  min 0  max 2000  target 2000
Power: system 12.35 W  adapter 0.00 W
)");
    EXPECT_EQ(smc->closed, 1);
    text.clear();
    reader.simulatesFanless = true;
    SensorDump::run(reader, Unknown::zero, print);
    EXPECT_NE(text.find("\nFans: none reported — Vantoro reads this Mac's condition from the chip's temperature.\n"),
              std::string::npos);
}

TEST_F(SensorDumpTest, WatchesForRowsOfFixedWidth) {
    smc->setFamily("Tp", {50, 51, 52.25});
    smc->set("FNum", "ui8 ", {1});
    smc->setFloat("F0Ac", 1234.9);
    SensorDump::watch(2, 2.0, reader, Unknown::zero, print);
    EXPECT_EQ(text, "SoC        GPU        FAN 0      FAN 1     \n"
                    "52.2       0.0        1234       0         \n"
                    "52.2       0.0        1234       0         \n");
    EXPECT_EQ(pauses, (std::vector{2000, 2000}));
    EXPECT_EQ(smc->closed, 1);
    text.clear();
    SensorDump::watch(0, 2.0, reader, Unknown::zero, print);
    EXPECT_EQ(text, "SoC        GPU        FAN 0      FAN 1     \n");
}

TEST_F(SensorDumpTest, SaysWhatIsNotKnownWhereTheControllerIsNone) {
    reader.trust = SensorTrust::fewAndHonest;
    smc->setFamily("Tp", {50});
    smc->set("FNum", "ui8 ", {1});
    smc->setFloat("F0Ac", 1200);
    smc->setFloat("F0Mx", 3000);
    SensorDump::run(reader, Unknown::said, print);
    EXPECT_NE(text.find(R"(
Results → SoC 50.0  GPU unknown  battery unknown  enclosure unknown
Fan 0: 1200 rpm  min unknown  max 3000  target unknown
Power: system unknown  adapter unknown
)"),
              std::string::npos)
        << text;
    EXPECT_EQ(pauses.size(), 1U) << "what counts up is read twice";
    text.clear();
    SensorDump::watch(1, 2.0, reader, Unknown::said, print);
    EXPECT_NE(text.find("50.0       unknown    1200       unknown   \n"), std::string::npos) << text;
    text.clear();
    smc->keys.clear();
    smc->setFloat("PSTR", 5);
    smc->setFloat("PDTR", 0);
    SensorDump::run(reader, Unknown::said, print);
    EXPECT_NE(text.find("\nFans: none reported.\nPower: system 5.00 W  adapter 0.00 W\n"), std::string::npos) << text;
}

TEST_F(SensorDumpTest, SaysThatNothingCouldBeOpened) {
    smc->refusesToOpen = true;
    SensorDump::run(reader, Unknown::zero, print);
    SensorDump::watch(2, 2.0, reader, Unknown::zero, print);
    EXPECT_EQ(text, "Could not open the SMC.\nCould not open the SMC.\n");
    text.clear();
    SensorDump::run(reader, Unknown::said, print);
    EXPECT_EQ(text, "No sensors were found.\n");
}

} // namespace
} // namespace vantoro
