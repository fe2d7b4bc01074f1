// The built program, from its command line to what it prints. VANTORO_WRITE_GOLDEN=1 writes the reports beside the
// recordings anew.
#include "Support/ChildProgram.h"

#include <cctype>

namespace vantoro {
namespace {

using testing::ChildProgram;
using testing::comesTrue;
using Words = std::vector<std::string>;

class Program : public ::testing::Test {
protected:
    /// The user's settings and language play no part.
    Program() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
            ::setenv(name, folder.path().c_str(), 1);
        for (const char* name : {"VANTORO_TOP", "VANTORO_INTERVAL", "VANTORO_PROCESS_MODE"})
            ::unsetenv(name);
        ::setenv("TZ", "UTC", 1);
        ::setenv("LANG", "C.UTF-8", 1);
    }

    static Words vantoro(Words arguments) {
        arguments.insert(arguments.begin(), VANTORO_PROGRAM);
        return arguments;
    }

    std::string path(const std::string& name) const { return folder.path() + "/" + name; }

    void expectReadable(const std::string& file) const {
        ChildProgram replay(vantoro({"--explain", "--replay", file}));
        EXPECT_EQ(replay.wait(), 0);
        EXPECT_EQ(replay.errors(), "");
        EXPECT_NE(replay.output().find("Based on "), std::string::npos);
    }

    testing::TemporaryFolder folder;
};

/// Who started a process; 0 once it runs no more.
pid_t parentOf(const std::string& pid) {
    const std::string stat = testing::fileText("/proc/" + pid + "/stat");
    const std::size_t name = stat.rfind(") ");
    return name == std::string::npos || stat[name + 2] == 'Z' ? 0 : std::stoi(stat.substr(name + 4));
}

Words childrenOf(pid_t parent) {
    Words children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc"))
        if (const std::string name = entry.path().filename(); std::isdigit(name[0]) && parentOf(name) == parent)
            children.push_back(name);
    return children;
}

/// The stream, not one of the programs that are called up for a moment only.
bool isStream(const std::string& pid) {
    return testing::fileText("/proc/" + pid + "/cmdline")
               .find(std::string("\0-l\0"
                                 "0\0",
                                 6)) != std::string::npos;
}

TEST_F(Program, GoldenReportsOnTheRecordings) {
    for (const std::string name : {"fans-compile", "fanless-browser", "calm"}) {
        const std::string recording = VANTORO_FIXTURES "/recordings/" + name + ".jsonl";
        ChildProgram text(vantoro({"--explain", "--replay", recording}));
        ChildProgram json(vantoro({"--explain", "--json", "--replay=" + recording}));
        EXPECT_EQ(text.wait(), 0);
        EXPECT_EQ(json.wait(), 0);
        EXPECT_EQ(text.errors() + json.errors(), "");
        testing::expectGolden("recordings/" + name + ".report.txt", text.output());
        testing::expectGolden("recordings/" + name + ".report.json", json.output());
    }
}

TEST_F(Program, FaultsAreOneLineOnStandardErrorAndNothingElse) {
    const std::string calm = testing::fileText(VANTORO_FIXTURES "/recordings/calm.jsonl");
    const std::string header = calm.substr(0, calm.find('\n') + 1);
    const std::string first = calm.substr(header.size(), calm.find('\n', header.size()) + 1 - header.size());
    std::string later = header;
    later.replace(later.find("\"version\":1"), 11, "\"version\":2");
    folder.write("empty", "");
    folder.write("headless", first);
    folder.write("later", later);
    folder.write("blank", header + first + "\n" + first);
    folder.write("plain.gz", calm);
    folder.write("cut", header + first + first.substr(0, 99));
    const auto replay = [&](const std::string& name) { return Words{"--explain", "--replay", path(name)}; };
    struct Case {
        Words arguments;
        std::string fault;
        int status = 2;
    };
    for (const auto& [arguments, fault, status] :
         {Case{{"--nonsense"}, "unknown argument '--nonsense'; --help lists the switches"},
          Case{{"--explain", "--seconds", "0"}, "--seconds needs a number above 0, not '0'"},
          Case{{"--json"}, "--json goes with --explain"},
          Case{{"--record", "--explain"},
               "--record needs FILE, and '--explain' looks like a switch; a file of that name is given with ./ before "
               "it"},
          Case{{"--explain", "--seconds", "--json"}, "--seconds needs N, and '--json' looks like a switch"},
          Case{{"--explain", "--replay", "/x/\u009b\u202E\xFF"}, "/x/???: No such file or directory"},
          Case{{"--record", "x", "--replay", "y"}, "--record and --replay exclude each other"},
          Case{replay("missing"), path("missing: No such file or directory")},
          Case{replay("empty"), path("empty:1: no header: the file is empty")},
          Case{replay("headless"), path("headless:1: no header: format is not \"vantoro-recording\"")},
          Case{replay("later"), path("later:1: version 2 is not one that can be read")},
          Case{replay("blank"), path("blank:3: not a JSON object (broken at byte 1)")},
          Case{replay("plain.gz"), path("plain.gz:1: the compressed data is damaged")},
          Case{replay("cut"), path("cut:3: the last line is cut off and left out"), 0}}) {
        ChildProgram program(vantoro(arguments));
        EXPECT_EQ(program.wait(), status) << fault;
        EXPECT_EQ(program.errors(), "vantoro: " + fault + "\n");
        EXPECT_EQ(program.output().empty(), status != 0) << fault;
    }
    for (const std::string what : {"--help", "--version", "--dump", "--dump --watch", "--check",
                                   "--explain --replay " VANTORO_FIXTURES "/recordings/calm.jsonl",
                                   "--explain --json --replay " VANTORO_FIXTURES "/recordings/calm.jsonl"}) {
        ChildProgram full({"/bin/sh", "-c", "exec \"$0\" " + what + " >/dev/full", VANTORO_PROGRAM});
        EXPECT_EQ(full.wait(), 1) << what;
        EXPECT_EQ(full.errors(), "vantoro: standard output cannot be written: No space left on device\n") << what;
    }
    ChildProgram small(
        {"/bin/sh", "-c", "ulimit -f 0 && exec \"$0\" --record \"$1\"", VANTORO_PROGRAM, path("new.jsonl")});
    EXPECT_EQ(small.wait(), 1);
    EXPECT_FALSE(std::filesystem::exists(path("new.jsonl")));
}

TEST_F(Program, RecordsWhatItCanReplayAndOverwritesNothing) {
    const std::string file = path("a.jsonl");
    ChildProgram recorder(vantoro({"--record", file, "--seconds", "1"}));
    EXPECT_EQ(recorder.wait(), 0);
    EXPECT_EQ(recorder.output() + recorder.errors(), "");
    expectReadable(file);
    const std::string before = testing::fileText(file);
    ChildProgram again(vantoro({"--record", file, "--seconds", "1"}));
    EXPECT_EQ(again.wait(), 1);
    EXPECT_EQ(again.errors(), "vantoro: " + file + ": the file already exists\n");
    EXPECT_EQ(testing::fileText(file), before);
}

TEST_F(Program, AnInterruptedRecordingIsWhole) {
    ::setenv("VANTORO_INTERVAL", "0.05", 1);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const std::string file = path(std::to_string(number) + ".jsonl.gz");
        ChildProgram recorder(vantoro({"--record", file}));
        ASSERT_TRUE(comesTrue([&] { return testing::fileText(file).size() > 500; })) << recorder.errors();
        recorder.signal(number);
        EXPECT_EQ(recorder.wait(), 0);
        EXPECT_EQ(recorder.errors(), "");
        expectReadable(file);
    }
}

TEST_F(Program, ReadsARecordingFromAPipeOnceOrNotAtAll) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const std::string pipe = "cat " VANTORO_FIXTURES "/recordings/calm.jsonl | exec \"$0\" --replay /dev/stdin ";
    ChildProgram explained({"/bin/sh", "-c", pipe + "--explain", VANTORO_PROGRAM});
    EXPECT_EQ(explained.wait(), 0);
    testing::expectGolden("recordings/calm.report.txt", explained.output());
    ChildProgram window({"/bin/sh", "-c", pipe, VANTORO_PROGRAM});
    EXPECT_EQ(window.wait(), 2);
    EXPECT_EQ(window.errors(), "vantoro: /dev/stdin: the window needs a file and not a pipe, which can be read only "
                               "once; --explain takes it\n");
    ::unsetenv("QT_QPA_PLATFORM");
}

TEST_F(Program, NamesWhoIsBusyWithAndWithoutTheStream) {
    // A copy of the shell under a name that nothing else has, which belongs to whatever job runs the tests.
    std::filesystem::copy_file("/bin/sh", path("busy-as-a-bee"));
    const ChildProgram busy({path("busy-as-a-bee"), "-c", "while :; do :; done"});
    // Much less than the patience with a stream that runs but says nothing.
    const Words command = vantoro({"--explain", "--seconds", "3", "--json"});
    ChildProgram withStream(command);
    ::setenv("VANTORO_TOP", "/nonexistent", 1);
    ChildProgram without(command);
    for (ChildProgram* const program : {&withStream, &without}) {
        EXPECT_EQ(program->wait(), 0);
        EXPECT_EQ(program->errors(), "");
        const std::string report = program->output();
        const std::size_t suspects = report.find("\"suspects\":[");
        EXPECT_LT(report.find("\"displayName\":\"busy-as-a-bee\"", suspects), report.find("\"explanation\"")) << report;
    }
}

TEST_F(Program, SaysThatNoListCameRatherThanThatAllIsQuiet) {
    const std::string silent = path("silent");
    std::ofstream(silent) << "#!/bin/sh\nexec sleep 60\n";
    std::filesystem::permissions(silent, std::filesystem::perms::owner_all);
    ChildProgram brief(vantoro({"--explain", "--seconds", "0.1"}));
    ::setenv("VANTORO_TOP", silent.c_str(), 1);
    ChildProgram text(vantoro({"--explain", "--seconds", "0.1"}));
    ChildProgram json(vantoro({"--explain", "--seconds", "0.1", "--json"}));
    EXPECT_EQ(brief.wait(), 0) << "it waits for the first list";
    EXPECT_NE(brief.output().find("Based on "), std::string::npos);
    for (ChildProgram* const program : {&text, &json}) {
        EXPECT_EQ(program->wait(), 1);
        EXPECT_EQ(program->errors(), "vantoro: no list of processes has come; there is no verdict\n");
    }
    EXPECT_EQ(text.output(), "Looking…\n\nNo list of processes has come yet.\n");
    EXPECT_EQ(json.output(), "");
}

TEST_F(Program, LeavesNoStreamBehindWhenItIsKilled) {
    ChildProgram program(vantoro({"--explain", "--seconds", "600"}));
    Words children;
    ASSERT_TRUE(comesTrue([&] {
        children = childrenOf(program.pid());
        return std::ranges::any_of(children, isStream);
    }));
    program.signal(SIGKILL);
    EXPECT_TRUE(comesTrue([&] { return std::ranges::none_of(children, parentOf); }));
    EXPECT_EQ(program.output() + program.errors(), "");
}

TEST_F(Program, OpensItsWindowOnceAndEndsWhenAsked) {
    const testing::TemporaryFolder runtime;
    ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("VANTORO_FIRST_FRAME", "1", 1);
    const auto hasPainted = [](const ChildProgram& program) {
        return comesTrue([&program] { return program.errors().find("first frame ") != std::string::npos; });
    };
    ChildProgram first(vantoro({}));
    EXPECT_TRUE(hasPainted(first));
    ChildProgram second(vantoro({}));
    EXPECT_EQ(second.wait(), 0) << "it has raised the first one's window";
    EXPECT_EQ(second.errors(), "");
    ChildProgram replay(vantoro({"--replay", VANTORO_FIXTURES "/recordings/fans-compile.jsonl"}));
    EXPECT_TRUE(hasPainted(replay)) << "a recording is looked at beside the program that watches";
    for (ChildProgram* const program : {&first, &replay}) {
        program->signal(SIGTERM);
        EXPECT_EQ(program->wait(), 0);
    }
    for (const char* name : {"QT_QPA_PLATFORM", "VANTORO_FIRST_FRAME", "XDG_RUNTIME_DIR"})
        ::unsetenv(name);
}

TEST_F(Program, SaysInOneLineWhyThereIsNoWindow) {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"})
        ::unsetenv(name);
    std::ofstream(path("broken.jsonl")) << "no recording\n";
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    ChildProgram withoutDesktop(vantoro({}));
    EXPECT_EQ(withoutDesktop.wait(), 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ChildProgram withoutRecording(vantoro({"--replay", path("broken.jsonl")}));
    EXPECT_EQ(withoutRecording.wait(), 2);
    ::unsetenv("QT_QPA_PLATFORM");
    for (const ChildProgram* const program : {&withoutDesktop, &withoutRecording}) {
        const std::string errors = program->errors();
        EXPECT_EQ(errors.find("vantoro: "), 0U) << errors;
        EXPECT_EQ(std::ranges::count(errors, '\n'), 1) << errors;
    }
}

} // namespace
} // namespace vantoro
