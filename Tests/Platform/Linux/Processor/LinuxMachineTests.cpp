#include "Platform/Linux/Processor/LinuxMachine.h"

#include <gtest/gtest.h>

namespace vantoro {
namespace {

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
