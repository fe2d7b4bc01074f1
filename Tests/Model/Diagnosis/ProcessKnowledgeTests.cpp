#include "Model/Diagnosis/ProcessKnowledge.h"

#include <gtest/gtest.h>

namespace vantoro {

TEST(ProcessKnowledge, FindsAProcessByItsNameOrByTheFirstWordOfIt) {
    EXPECT_EQ(friendlyName("backupd"), "Time Machine");
    EXPECT_EQ(friendlyName("  backupd"), "Time Machine");
    EXPECT_EQ(friendlyName("kernel_task (idle)"), "kernel_task");
    EXPECT_EQ(friendlyName("WindowServer  Helper"), "WindowServer");
    for (const char* unknown : {"Backupd", "backup", "backupd-helper", "the backupd", "backupd\thelper", "", "   "}) {
        EXPECT_EQ(ProcessKnowledge::note(unknown), nullptr) << unknown;
        EXPECT_EQ(friendlyName(unknown), unknown);
    }
}

TEST(ProcessKnowledge, EveryNoteReadsOnInASentence) {
    EXPECT_EQ(ProcessKnowledge::notes().size(), 17U);
    for (const auto& [name, note] : ProcessKnowledge::notes()) {
        EXPECT_FALSE(note.friendly.empty()) << name;
        EXPECT_EQ(note.what.back(), '.') << name;
        EXPECT_NE(note.advice, "") << name;
        EXPECT_FALSE(note.selfResolving && note.quittable) << name;
    }
}

} // namespace vantoro
