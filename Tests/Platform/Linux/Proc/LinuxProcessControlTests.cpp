// Real processes of this machine, asked and ended.
#include "Model/Processes/Quitting.h"
#include "Platform/Linux/Proc/LinuxProcessControl.h"
#include "Platform/Posix/Clocks.h"

#include "Support/ChildProgram.h"

#include <filesystem>

namespace vantoro {
namespace {

using testing::ChildProgram;
using testing::comesTrue;

TEST(LinuxProcessControl, EndsRealProcessesFirstAskedThenByForce) {
    LinuxProcessControl control;
    // One ends when it is asked; the other does not, and starts a third after the question.
    ChildProgram obedient({"/bin/sleep", "600"});
    ChildProgram stubborn({"/bin/sh", "-c",
                           "trap '' TERM; echo ready; while [ ! -e \"$0\" ]; do sleep 0.05; done; sleep 600 & "
                           "echo $!; wait",
                           obedient.outputFolder() + "/go"});
    ASSERT_TRUE(comesTrue([&] { return !stubborn.output().empty(); }));
    QuitQuestion question{.key = "both", .name = "both", .processes = {}, .known = {}};
    for (const pid_t pid : {obedient.pid(), stubborn.pid()}) {
        const auto process = livingProcess(control, {.pid = pid, .firstSeen = unixSeconds()});
        ASSERT_TRUE(process.has_value());
        EXPECT_FALSE(livingProcess(control, {.pid = pid, .firstSeen = unixSeconds() - 3600}).has_value());
        question.processes.push_back(*process);
    }
    std::vector<LivingProcess> alive;
    control.list(alive);
    for (const LivingProcess& process : alive)
        question.known.emplace(process.pid, process.birth);
    std::ofstream(obedient.outputFolder() + "/go") << "go";
    ASSERT_TRUE(comesTrue([&] { return stubborn.output().size() > 7; })) << "the third has started";

    Quitting quitting(question);
    quitting.ask(control, 0);
    EXPECT_TRUE(comesTrue([&] {
        quitting.look(control, 1);
        return quitting.ended() >= 1;
    })) << "a zombie counts as ended: nobody has waited for it";
    quitting.look(control, 5);
    EXPECT_EQ(quitting.stage(), Quitting::Stage::stillRunning);
    EXPECT_GE(quitting.all(), 3);
    quitting.force(control, 6);
    EXPECT_TRUE(comesTrue([&] {
        quitting.look(control, 7);
        return quitting.stage() == Quitting::Stage::over;
    }));
    const std::int32_t third = std::stoi(stubborn.output().substr(6));
    EXPECT_TRUE(comesTrue([&] { return !control.find(third).has_value(); }));
}

TEST(LinuxProcessControl, LeavesAloneWhoOnlyHasTheNumber) {
    LinuxProcessControl control;
    ChildProgram child({"/bin/sleep", "600"});
    LivingProcess before = *control.find(child.pid());
    EXPECT_EQ(before.parentPid, ::getpid());
    EXPECT_EQ(control.folder(before), std::filesystem::current_path());
    before.birth -= 1;
    EXPECT_EQ(control.folder(before), "");
    EXPECT_EQ(control.end(before, QuitManner::force), QuitAnswer::gone);
    EXPECT_TRUE(control.find(child.pid()).has_value());
    EXPECT_EQ(control.end(*control.find(::getpid()), QuitManner::force), QuitAnswer::refused);
    EXPECT_EQ(control.end(*control.find(1), QuitManner::force), QuitAnswer::refused);
    EXPECT_FALSE(control.find(0).has_value());
    EXPECT_FALSE(control.find(-1).has_value());
}

} // namespace
} // namespace vantoro
