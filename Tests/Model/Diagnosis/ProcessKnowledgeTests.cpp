#include "Model/Diagnosis/ProcessKnowledge.h"

#include "Model/Diagnosis/LinuxNotes.h"
#include "Support/Testing.h"

namespace vantoro {

namespace {

std::optional<ProcessNote> linuxNote(std::string_view name, ProcessKind kind = ProcessKind::commandLine) {
    return ProcessKnowledge::note(name, kind, SystemKind::gnuLinux);
}

} // namespace

TEST(ProcessKnowledge, FindsAProcessByItsNameOrByTheFirstWordOfIt) {
    const auto friendlyName = [](const char* name) {
        return vantoro::friendlyName(ProcessGroup{.displayName = name}, SystemKind::macos);
    };
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
        EXPECT_FALSE((note.selfResolving && note.quittable) || note.ordinary) << name;
    }
}

TEST(ProcessKnowledge, EverySystemHasItsOwnTable) {
    const ProcessGroup group{.displayName = "backupd"};
    EXPECT_EQ(friendlyName(group, SystemKind::macos), "Time Machine");
    EXPECT_EQ(friendlyName(group, SystemKind::gnuLinux), "backupd");
    EXPECT_FALSE(ProcessKnowledge::note("cc1plus", ProcessKind::commandLine, SystemKind::macos));
}

TEST(ProcessKnowledge, EveryLinuxNoteReadsOnInASentenceAndNamesNobodyTwice) {
    std::set<std::string> names;
    std::size_t notes = 0;
    for (const auto& table : {linuxKernelNotes(), linuxProgramNotes()}) {
        names.clear();
        for (const LinuxNote& note : table) {
            std::istringstream words(note.names);
            for (std::string name; words >> name;)
                EXPECT_TRUE(names.insert(name).second) << name;
            const std::string what = note.what;
            EXPECT_TRUE(what.back() == '.' &&
                        (std::islower(static_cast<unsigned char>(what[0])) != 0 || what.starts_with("Steam")))
                << what;
            EXPECT_TRUE(note.advice != nullptr && std::string_view(note.advice).ends_with('.')) << note.names;
            for (const char* text : {note.what, note.advice, note.friendly})
                for (const char* other : {"Mac", "Apple", "Spotlight", "Finder"})
                    EXPECT_TRUE(text == nullptr || std::string_view(text).find(other) == std::string_view::npos)
                        << text;
            ++notes;
        }
    }
    EXPECT_GE(notes, 100U);
}

TEST(ProcessKnowledge, TellsWhoIsBusyOnLinux) {
    using enum ProcessKind;
    using Case = std::tuple<const char*, ProcessKind, const char*, bool, bool>;
    for (const auto& [name, kind, friendly, selfResolving, quittable] :
         {Case{"tracker-miner-fs-3", systemDaemon, "File indexing", true, false},
          Case{"localsearch-extractor-3", systemDaemon, "File indexing", true, false},
          Case{"dpkg", systemDaemon, "Package installation", true, false},
          Case{"cc1plus", commandLine, "Compiler", true, true}, Case{"clang-14", commandLine, "Compiler", true, true},
          Case{"x86_64-linux-gnu-ld.bfd", commandLine, "Linker", true, true},
          Case{"Isolated Web Co", helper, "Firefox", false, true},
          Case{"container 3f2a1b4c5d6e", systemDaemon, "container 3f2a1b4c5d6e", false, true},
          Case{"virtual machine win11", systemDaemon, "virtual machine win11", false, true},
          Case{"qemu-system-x86_64", commandLine, "qemu-system-x86_64", false, true},
          // What is not to be quit, whoever runs it.
          Case{"gnome-shell", commandLine, "GNOME Shell", false, false},
          Case{"Xorg", commandLine, "Display server (Xorg)", false, false},
          Case{"systemd", commandLine, "Service manager (systemd)", false, false},
          Case{"systemd-networkd", systemDaemon, "Network", false, false},
          Case{"systemd-homed", systemDaemon, "systemd-homed", false, false},
          // The kernel's, the longest beginning first.
          Case{"kswapd", kernel, "Memory reclaim (kswapd)", false, false},
          Case{"kworker/i915-unordered", kernel, "Graphics driver", false, false},
          Case{"kworker/kcryptd", kernel, "Disk encryption", false, false},
          Case{"kworker/something_new", kernel, "Kernel worker", false, false},
          Case{"irq/nvme0q3", kernel, "irq/nvme0q3", false, false}, Case{"md_resync", kernel, "RAID", true, false}}) {
        const auto note = linuxNote(name, kind);
        ASSERT_TRUE(note) << name;
        EXPECT_EQ(note->friendly, friendly) << name;
        EXPECT_EQ(note->selfResolving, selfResolving) << name;
        EXPECT_EQ(note->quittable, quittable) << name;
    }
    EXPECT_EQ(linuxNote("irq/nvme0q3", kernel)->what, "the kernel answering a drive's interrupts.");
    for (const char* unknown : {"", " ", "train.py", "cc1plus2", "CC1PLUS", "my make", "container", "systemd_x"})
        EXPECT_FALSE(linuxNote(unknown)) << unknown;
}

TEST(ProcessKnowledge, AProgramThatCallsItselfAThreadOfTheKernelIsNotExcused) {
    for (const char* name : {"kswapd0", "kworker/u8:2-events", "ksoftirqd", "migration"})
        EXPECT_FALSE(linuxNote(name)) << name;
    EXPECT_FALSE(linuxNote("cc1plus", ProcessKind::kernel));
}

TEST(ProcessKnowledge, AServiceIsTheProgramThatDoesMostOfItsWork) {
    using Programs = std::vector<std::pair<const char*, double>>;
    const auto friendly = [](const Programs& programs, SystemKind system, ProcessKind kind) {
        ProcessGroup group{.displayName = "acme-logs", .kind = kind};
        for (const auto& [program, percent] : programs)
            group.members.push_back({.displayName = program, .averageCPU = percent});
        return friendlyName(group, system);
    };
    using enum ProcessKind;
    EXPECT_EQ(friendly({{"rsyslogd", 20}, {"sh", 30}, {"rsyslogd", 15}}, SystemKind::gnuLinux, systemDaemon),
              "System log");
    EXPECT_EQ(friendly({{"rsyslogd", 0}}, SystemKind::gnuLinux, systemDaemon), "System log");
    EXPECT_EQ(friendly({{"rsyslogd", 20}, {"sh", 20}}, SystemKind::gnuLinux, systemDaemon), "acme-logs");
    EXPECT_EQ(friendly({{"rsyslogd", 20}}, SystemKind::gnuLinux, commandLine), "acme-logs");
    EXPECT_EQ(friendly({{"backupd", 20}}, SystemKind::macos, systemDaemon), "acme-logs");
}

} // namespace vantoro
