#include "Platform/Linux/Processor/LinuxMachine.h"

#include "Support/Folders.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace vantoro {
namespace {

TEST(LinuxMachine, NamesRecordedMachines) {
    const LinuxMachine laptop(testing::recordedMachine("laptop"));
    EXPECT_EQ(laptop.modelIdentifier(), "Aurora 14");
    EXPECT_EQ(laptop.processorBrand(), "Intel Core i7-8550U");
    const LinuxMachine board(testing::recordedMachine("board"));
    EXPECT_EQ(board.modelIdentifier(), "Example Pi 3 Model B Rev 1.2");
    EXPECT_EQ(board.processorBrand(), "BCM2835");
    const LinuxMachine unnamed(testing::recordedMachine("desktop-unnamed"));
    EXPECT_EQ(unnamed.modelIdentifier(), "B450 Gamma");
    EXPECT_EQ(unnamed.processorBrand(), "AMD Ryzen 5 3600 6-Core");
    const testing::TemporaryFolder empty;
    EXPECT_EQ(LinuxMachine(empty.path()).modelIdentifier(), "Linux machine");
    EXPECT_FALSE(LinuxMachine(empty.path()).processorBrand());
}

TEST(LinuxMachine, TidiesTexts) {
    EXPECT_EQ(tidyFirmwareText("  A\x01\tB\n"), "AB");
    for (const char* filler : {"", " \n", "default string", "System Product Name\n", "To be filled by O.E.M."})
        EXPECT_FALSE(tidyFirmwareText(filler)) << filler;
    EXPECT_EQ(tidyProcessorBrand("Genuine(R)  Intel(TM)   CPU  @ 2.40GHz"), "Genuine Intel");
    EXPECT_EQ(tidyProcessorBrand("(R)(TM)"), "");
    EXPECT_FALSE(parseCpuInfo("model name\t:\nmodel names : x\n", "model name"));
}

} // namespace
} // namespace vantoro
