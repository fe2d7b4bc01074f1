// What supplies, meters and counters tell of power, and what they do not.
#include "Platform/Linux/Power/SystemPower.h"

#include "Platform/Linux/Sensors/SensorMachine.h"

namespace vantoro {
namespace {

using testing::SensorMachine;
using Files = std::map<std::string, std::string>;

const std::string supply = "sys/class/power_supply/";
const std::string hwmon = "sys/class/hwmon/hwmon0/";
const std::string zones = "sys/class/powercap/intel-rapl:";

void write(const SensorMachine& machine, const Files& files) {
    for (const auto& [file, text] : files)
        machine.write(file, text + "\n");
}

PowerFigures figuresOf(SensorMachine& machine, const Files& files, const Files& twoSecondsLater) {
    write(machine, files);
    SystemPower power(machine.root(), discoverHwmon(machine.root()), machine.lane());
    power.figures();
    write(machine, twoSecondsLater);
    machine.pass(2);
    return power.figures();
}

TEST(SystemPower, SaysWhatIsMeasuredAndNothingElse) {
    const Files plugged = {{supply + "AC/type", "Mains"}, {supply + "AC/online", "1"}};
    const Files unplugged = {{supply + "AC/type", "Mains"}, {supply + "AC/online", "0"}};
    const auto battery = [](const std::string& status, const std::string& microwatts, std::string name = "BAT0") {
        return Files{{supply + name + "/type", "Battery"},
                     {supply + name + "/status", status},
                     {supply + name + "/power_now", microwatts}};
    };
    const auto usb = [](const std::string& name, Files more = {}) {
        more.insert({{supply + name + "/type", "USB"},
                     {supply + name + "/online", "1"},
                     {supply + name + "/voltage_now", "20000000"},
                     {supply + name + "/current_now", "3250000"}});
        return more;
    };
    /// A chip of this driver with these files.
    const auto chip = [](const std::string& driver, const std::vector<std::pair<const char*, const char*>>& its) {
        Files files{{hwmon + "name", driver}};
        for (const auto& [name, text] : its)
            files.emplace(hwmon + name, text);
        return files;
    };
    const auto both = [](Files files, const Files& more) {
        files.insert(more.begin(), more.end());
        return files;
    };
    const Files psys = {{zones + "1/name", "psys"}, {zones + "1/energy_uj", "1000000"}};
    const Files package = {{zones + "0/name", "package-0"}, {zones + "0/energy_uj", "1000000"}};
    const Files psysLater = {{zones + "1/energy_uj", "81000000"}};
    const Files packageLater = {{zones + "0/energy_uj", "101000000"}};
    const Files discharging = both(unplugged, battery("Discharging", "9500000"));
    const auto expect = [](const char* what, const Files& files, const PowerFigures& figures, const Files& later = {}) {
        SCOPED_TRACE(what);
        SensorMachine machine;
        EXPECT_EQ(figuresOf(machine, files, later), figures);
    };
    expect("on battery", discharging, {9.5, 0, 9.5});
    expect("a gauge whose sign is the flow's", both(unplugged, battery("Discharging", "-9500000")), {9.5, 0, 9.5});
    expect("a battery that gives nothing does not feed a machine", both(unplugged, battery("Discharging", "0")),
           {{}, 0, {}});
    expect("more than a battery can give", both(unplugged, battery("Discharging", "720885000")), {{}, 0, {}});
    expect("two batteries, one of which does not tell", both(discharging, battery("Discharging", "x", "BAT1")),
           {{}, 0, 9.5});
    expect("two batteries, one after the other", both(discharging, battery("Not charging", "4000000", "BAT1")),
           {9.5, 0, 9.5});
    expect("charging alone is not the adapter's", both(plugged, battery("Charging", "30000000")), {{}, {}, 30});
    expect("a full battery's last figure flows no more", both(plugged, battery("Full", "2000000")), {});
    expect("an adapter too weak for the machine", both(both(plugged, battery("Discharging", "5000000")), psys),
           {40, {}, 5}, psysLater);
    expect("the platform and what charges", both(both(plugged, battery("Charging", "30000000")), psys), {40, 70, 30},
           psysLater);
    expect("the platform alone feeds", both(both(plugged, battery("Full", "0")), psys), {40, 40, {}}, psysLater);
    expect("a platform that draws less than its processor", both(psys, package), {}, both(psysLater, packageLater));
    expect("a package is not the machine", package, {}, packageLater);
    expect("a contract is not a flow", usb("ucsi-source-psy-USBC000:001"), {});
    expect("nor is this one", usb("tcpm-source-psy-4-0022"), {});
    expect("nor any of power delivery", usb("port0", {{supply + "port0/usb_type", "C [PD] PD_PPS"}}), {});
    expect("a charger's current goes into its battery",
           usb("bq25890-charger", {{supply + "bq25890-charger/status", "Full"}}), {});
    expect("a port that measures", usb("axp20x-usb", {{supply + "axp20x-usb/usb_type", "[SDP] DCP"}}), {{}, 65, {}});
    expect("the meter of a server's supply", chip("power_meter", {{"power1_average", "212000000"}}), {212, {}, {}});
    expect("a meter that is broken", chip("power_meter", {{"power1_average", "4294967295000000"}}), {});
    expect("a power supply that measures its output",
           chip("corsairpsu", {{"power1_input", "181000000"},
                               {"power1_label", "power total"},
                               {"power2_input", "90000000"},
                               {"power2_label", "power +12v"}}),
           {181, {}, {}});
    expect("a Mac's rails by their words",
           chip("macsmc_hwmon", {{"power1_input", "3100000"},
                                 {"power1_label", "3.8 V Rail Power"},
                                 {"power2_input", "12400000"},
                                 {"power2_label", "Total System Power"},
                                 {"power3_input", "30100000"},
                                 {"power3_label", "AC Input Power"}}),
           {12.4, 30.1, {}});
}

TEST(SystemPower, TellsTheProcessorsShareWhereSomethingMeasuresIt) {
    const auto zone = [](const std::string& number, const std::string& name) {
        return Files{{zones + number + "/name", name}, {zones + number + "/energy_uj", "0"}};
    };
    Files client = zone("0", "package-0");
    client.merge(zone("0:0", "core"));
    client.merge(zone("0:1", "uncore"));
    Files sockets = zone("0", "package-0");
    sockets.merge(zone("1", "package-1"));
    const auto energy = [](const std::string& number, const std::string& microjoules) {
        return std::pair{zones + number + "/energy_uj", microjoules};
    };
    const Files apu = {{hwmon + "name", "amdgpu"},
                       {hwmon + "in0_input", "900"},
                       {hwmon + "in1_input", "800"},
                       {hwmon + "power1_input", "23000000"},
                       {hwmon + "power1_label", "PPT"}};
    Files zen = {{"sys/class/hwmon/hwmon1/name", "zenpower"},
                 {"sys/class/hwmon/hwmon1/power1_input", "17000000"},
                 {"sys/class/hwmon/hwmon1/power1_label", "SVI2_P_Core"},
                 {"sys/class/hwmon/hwmon1/power2_input", "4000000"},
                 {"sys/class/hwmon/hwmon1/power2_label", "SVI2_P_SoC"}};
    zen.insert(apu.begin(), apu.end());
    const auto expect = [](const char* what, const Files& files, const Files& later, std::optional<double> watts) {
        SCOPED_TRACE(what);
        SensorMachine machine;
        write(machine, files);
        ProcessorPower power(machine.root(), discoverHwmon(machine.root()), machine.lane());
        power.watts();
        write(machine, later);
        machine.pass(2);
        EXPECT_EQ(power.watts(), watts);
    };
    expect("the package without its graphics part", client, {energy("0", "60000000"), energy("0:1", "10000000")}, 25);
    expect("two sockets", sockets, {energy("0", "60000000"), energy("1", "40000000")}, 50);
    expect("two sockets, one of which is out of order", sockets, {energy("0", "60000000"), energy("1", "x")}, {});
    expect("counters that stand still", sockets, {}, {});
    expect("the package as its graphics part measures it", apu, {}, 23);
    expect("the same power is not added twice", zen, {}, 21);
    expect("a graphics card is no processor", {{hwmon + "name", "amdgpu"}, {hwmon + "power1_average", "9000000"}}, {},
           {});
    expect("nothing", {}, {}, {});
}

} // namespace
} // namespace vantoro
