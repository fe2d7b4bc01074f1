// Situations with a known culprit, or with none, each made anew from a seed, and who made the heat in them.
#pragma once

#include "World.h"

#include <span>

namespace culprit {

/// Who made the heat. Decided from the energy of each owner beyond what it used while all was quiet, counted by how
/// much of it is still in the machine when the question is asked.
struct Truth {
    /// Any of these is right; empty: nobody.
    std::vector<std::vector<std::string>> culprits;
    /// Naming nobody is right as well: what a list may show does not tell who it is.
    bool mayBeNobody = false;
    /// No one made half of it.
    bool isSpread = false;
    /// When the first culprit began, seconds since the epoch.
    double begins = 0;
    /// The first culprit's processor seconds up to each sample, and when that was.
    std::vector<double> processorSeconds;
    std::vector<double> sampleTimes;

    bool isNobody() const { return culprits.empty(); }
    bool accepts(const std::string& name) const;
};

struct Made {
    Machine machine;
    std::vector<std::string> lines;
    Truth truth;
};

/// What a family's script is given: the machine in its quiet state, and when the work begins.
struct Scene {
    World& world;
    Random& random;
    int cores = 1;
    double begins = 100;
    /// When the question is asked; the recording ends there.
    double asked = 200;
    /// When the recording begins.
    double opened = 0;
    /// Who the script means; the energy must agree, or the scene is drawn anew. Empty: nobody.
    std::vector<int> meant;
    bool mayBeNobody = false;
    /// Which of these is the culprit is left to the energy.
    bool isLeftToEnergy = false;

    bool isMac() const { return world.machine().isMac; }
    double uniform(double from, double to) { return random.uniform(from, to); }
    /// This part of all processors while the time is within.
    Course share(double part, double from, double to = 1e9) const;
    int owner(const std::string& name, bool isMeant = false);
    /// One ordinary program of any kind that keeps this part of the machine busy.
    int hog(double part, double from, double to, bool isMeant);
};

/// Whose process lists a family is about.
enum class Lists : std::uint8_t { any, mac, gnuLinux };

struct Family {
    const char* name;
    const char* what;
    void (*script)(Scene&);
    /// Bits of MachineKind.
    unsigned machines = 7;
    /// Why processor time cannot tell; null where it can.
    const char* undecidable = nullptr;
    Lists lists = Lists::any;
};
inline constexpr unsigned withSensors = 3;

std::span<const Family> processorFamilies();
std::span<const Family> otherFamilies();
std::vector<Family> allFamilies();

/// The ordinary programs of a desktop or server, each a little busy.
void addBackground(World& world, Random& random);

/// The same from the same arguments. None where no machine of this kind gets noticeably warm, loud or busy by it.
std::optional<Made> make(const Family& family, MachineKind kind, std::uint64_t seed);

} // namespace culprit
