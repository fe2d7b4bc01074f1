#include "Model/ProcessKnowledge.h"

#include <gtest/gtest.h>

namespace vantoro {

TEST(ProcessKnowledge, FindsAProcessByItsNameOrByTheFirstWordOfIt) {
    struct Case {
        const char* name;
        const char* friendly; // null: not known
    };
    for (const auto& [name, friendly] : {
             Case{"backupd", "Time Machine"},
             Case{"  backupd", "Time Machine"},
             Case{"kernel_task (idle)", "kernel_task"},
             Case{"WindowServer  Helper", "WindowServer"},
             Case{"Backupd", nullptr},
             Case{"backup", nullptr},
             Case{"backupd-helper", nullptr},
             Case{"the backupd", nullptr},
             Case{"backupd\thelper", nullptr},
             Case{"", nullptr},
             Case{"   ", nullptr},
         }) {
        const ProcessNote* note = ProcessKnowledge::note(name);
        ASSERT_EQ(note != nullptr, friendly != nullptr) << name;
        EXPECT_EQ(friendlyName(name), friendly != nullptr ? friendly : name);
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
    EXPECT_EQ(ProcessKnowledge::note("coreaudiod")->advice, std::nullopt);
    EXPECT_TRUE(ProcessKnowledge::note("wifip2pd")->quittable);
    EXPECT_FALSE(ProcessKnowledge::note("WindowServer")->quittable);
}

} // namespace vantoro
