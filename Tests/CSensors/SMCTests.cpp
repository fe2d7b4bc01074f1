#include "CSensors/smc.h"

#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

using testing::ScriptedSMC;

class SMC : public ::testing::Test {
protected:
    SMC() {
        smc_use(service);
        smc_open();
    }
    ~SMC() override { smc_use(nullptr); }

    static std::optional<double> read(const char* key) {
        double value = -77;
        if (smc_read_number(key, &value) == 1)
            return value;
        EXPECT_EQ(value, -77) << "a failed reading touches nothing";
        return std::nullopt;
    }

    std::shared_ptr<ScriptedSMC> service = std::make_shared<ScriptedSMC>();
};

TEST_F(SMC, DecodesEachType) {
    const std::tuple<const char*, std::vector<std::uint8_t>, std::optional<double>> cases[] = {
        {"flt ", {0x00, 0x00, 0xC0, 0x3F}, 1.5},
        {"flt ", {0x00, 0x00}, {}},
        {"flt ", {0x00, 0x00, 0xC0, 0x3F, 0x00}, {}},
        {"ui8 ", {0xFE}, 254},
        {"ui  ", {0xFE}, 254},
        {"ui16", {0x12, 0x34}, 4660},
        {"ui32", {0xFE, 0xDC, 0xBA, 0x98}, 4275878552},
        {"si8 ", {0xFE}, -2},
        {"si16", {0xFF, 0xFE}, -2},
        {"fpe2", {0x13, 0x4B}, 1234},
        {"fpe2", {0xFF, 0xFF}, 16383},
        {"fp88", {0xFF, 0x80}, -0.5},
        {"sp78", {0xFF, 0x80}, -0.5},
        {"sp78", {0x2F, 0x40}, 47.25},
        {"ch8*", {0x41}, {}},
        {"flag", {0x01}, {}},
    };
    for (const auto& [type, bytes, expected] : cases) {
        service->set("TEST", type, bytes);
        EXPECT_EQ(read("TEST"), expected) << type << ' ' << bytes.size();
    }
}

TEST_F(SMC, AsksTwiceForANumberAndPassesTheSizeBack) {
    service->set("F0Ac", "fpe2", {0x10, 0x00});
    EXPECT_EQ(read("F0Ac"), 1024);
    EXPECT_EQ(service->calls, 2);
    EXPECT_EQ(service->lastRequest, (SMCKeyData{.key = 0x46304163, .keyInfo = {.dataSize = 2}, .data8 = 5}));
}

TEST_F(SMC, AKeyThatIsNotFourCharactersIsNotAskedFor) {
    for (const char* const key : {"", "ABC", "ABCDE", static_cast<const char*>(nullptr)})
        EXPECT_EQ(read(key), std::nullopt);
    EXPECT_EQ(service->calls, 0);
}

TEST_F(SMC, EachFailureIsZero) {
    service->setFloat("Tp01", 40);
    for (const SMCCommand command : {SMCCommand::readKeyInfo, SMCCommand::readBytes})
        for (auto* const faults : {&service->failingCalls, &service->badResults}) {
            faults->insert({"Tp01", command});
            EXPECT_EQ(read("Tp01"), std::nullopt);
            faults->clear();
        }
    EXPECT_EQ(read("none"), std::nullopt);
    EXPECT_EQ(read("Tp01"), 40) << "no failure closes the connection";

    char key[5] = "left";
    char type[5] = "left";
    std::uint32_t size = 99;
    const auto fails = [&] { return smc_key_at_index(0, key, type, &size) == 0 && size == 99; };
    service->failingCalls = {{"Tp01", SMCCommand::getKeyAtIndex}};
    EXPECT_TRUE(fails());
    service->failingCalls = {{"Tp01", SMCCommand::readKeyInfo}};
    EXPECT_TRUE(fails());
    service->failingCalls = {};
    service->badResults = {{"Tp01", SMCCommand::readKeyInfo}};
    EXPECT_TRUE(fails());
    EXPECT_STREQ(key, "left");
}

TEST_F(SMC, CountsAndListsItsKeys) {
    service->set("A b ", "ui8 ", {1});
    service->setFloat("TpXY", 1);
    // The result that comes with a count, and with a key at an index, says nothing.
    service->badResults = {{"#KEY", SMCCommand::readBytes}, {"TpXY", SMCCommand::getKeyAtIndex}};
    EXPECT_EQ(smc_key_count(), 2U);
    char key[5];
    char type[5];
    std::uint32_t size = 0;
    ASSERT_EQ(smc_key_at_index(1, key, type, &size), 1U);
    EXPECT_STREQ(key, "TpXY");
    EXPECT_STREQ(type, "flt ");
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(smc_key_at_index(2, key, type, &size), 0U);

    service->badResults = {{"#KEY", SMCCommand::readKeyInfo}};
    EXPECT_EQ(smc_key_count(), 0U);
    service->badResults = {};
    service->failingCalls = {{"#KEY", SMCCommand::readBytes}};
    EXPECT_EQ(smc_key_count(), 0U);
}

TEST_F(SMC, OpensOnceAndReadsNothingWhileClosed) {
    EXPECT_EQ(smc_open(), 1U);
    EXPECT_EQ(service->opened, 1);
    EXPECT_EQ(smc_close(), 0x2AU) << "the system's own code";
    EXPECT_EQ(smc_close(), 0U);
    EXPECT_EQ(service->closed, 1);
    service->setFloat("Tp01", 40);
    char text[5];
    std::uint32_t size = 0;
    EXPECT_EQ(read("Tp01"), std::nullopt);
    EXPECT_EQ(smc_key_count(), 0U);
    EXPECT_EQ(smc_key_at_index(0, text, text, &size), 0U);
    EXPECT_EQ(service->calls, 0);

    service->refusesToOpen = true;
    EXPECT_EQ(smc_open(), 0U);
    service->refusesToOpen = false;
    EXPECT_EQ(smc_open(), 1U);
    smc_use(nullptr);
    EXPECT_EQ(service->closed, 2) << "a service that is replaced is closed";
    EXPECT_EQ(smc_open(), 0U);
}

} // namespace
} // namespace vantoro
