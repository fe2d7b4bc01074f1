#include "Platform/Linux/Power/LinuxGraphicsClients.h"

#include "Platform/Linux/Power/DrmClients.h"
#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Reading/DeviceRest.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <set>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

std::optional<std::int32_t> numberNamed(std::string_view name) {
    std::int32_t number = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), number);
    return fault == std::errc() && end == name.data() + name.size() && number >= 0 ? std::optional(number)
                                                                                   : std::nullopt;
}

/// The cards that render and whose drivers tell of their clients.
std::set<std::string, std::less<>> tellingNodes(const std::string& root) {
    constexpr std::array<std::string_view, 5> silent{"nvidia", "nouveau", "virtio_gpu", "virtio-pci", "vmwgfx"};
    const std::string folder = root + "/sys/class/drm/";
    std::set<std::string, std::less<>> nodes;
    for (const std::string& name : namesIn(folder)) {
        if (graphicsNode("/dri/" + name) != name)
            continue;
        std::array<char, 256> link{};
        const ssize_t size = ::readlink((folder + name + "/device/driver").c_str(), link.data(), link.size());
        std::string_view driver(link.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
        driver.remove_prefix(driver.rfind('/') + 1);
        if (std::ranges::find(silent, driver) == silent.end())
            nodes.insert(name);
    }
    // Where none renders, cards only show pictures.
    const bool anyRenders = std::ranges::any_of(nodes, [](const auto& node) { return node.starts_with("render"); });
    return anyRenders ? nodes : decltype(nodes)();
}

} // namespace

std::string_view graphicsNode(std::string_view openFile) {
    constexpr std::string_view folder = "/dri/";
    const std::size_t at = openFile.rfind(folder);
    if (at == std::string_view::npos)
        return {};
    const std::string_view node = openFile.substr(at + folder.size());
    for (const std::string_view kind : {"renderD", "card"})
        if (node.starts_with(kind) && numberNamed(node.substr(kind.size())))
            return node;
    return {};
}

/// All that the lane works with, owned by the reading.
class LinuxGraphicsClients::Clients {
public:
    Clients(std::string root, std::set<std::string, std::less<>> nodes, SecondsClock clock, std::uint32_t ownUid)
        : root_(std::move(root)), nodes_(std::move(nodes)), clock_(std::move(clock)), ownUid_(ownUid) {}

    std::optional<Taken> take() {
        constexpr double sameMomentSeconds = 0.2;
        if (lookedAt_ && clock_() - now_ < sameMomentSeconds)
            return last_;
        now_ = clock_();
        if (!lookedAt_ || now_ - *lookedAt_ >= lookSeconds)
            look();
        for (auto& [node, device] : devices_)
            device.look = device.rest->at(now_, !std::exchange(device.wasRead, true));
        readNew();
        for (auto client = clients_.begin(); client != clients_.end();)
            client = read(client->first, client->second) ? std::next(client) : clients_.erase(client);
        last_ = shares();
        return last_;
    }

private:
    struct Device {
        std::shared_ptr<DeviceRest> rest;
        Look look = Look::read;
        bool wasRead = false;
    };
    /// A descriptor of a client.
    struct Holder {
        std::int32_t pid = 0;
        std::int32_t number = 0;
        Device* device = nullptr;
        SensorFile info;
        std::optional<std::uint64_t> ticks = {};
    };
    struct Client {
        Device* device = nullptr;
        DrmMeter meter;
        std::vector<Holder> holders;
        std::int32_t worker = 0;
        bool tells = false;
    };
    /// Driver, address, number.
    using Key = std::tuple<std::string, std::string, std::uint64_t>;
    struct Process {
        std::uint64_t seenAt = 0;
        std::uint64_t foundAt = 0;
        /// How many descriptors it had when they were listed; negative to have them listed again.
        std::int64_t descriptors = -1;
        bool isForeign = false;
        bool computes = false;
        std::vector<std::int32_t> held;
    };

    void look() {
        constexpr std::size_t turns = 6;
        lookedAt_ = now_;
        ++looks_;
        isWhole_ = true;
        const Folder folder(::opendir((root_ + "/proc").c_str()), ::closedir);
        if (!folder) {
            processes_.clear();
            return;
        }
        const int proc = ::dirfd(folder.get());
        struct stat own {};
        const bool tellsCounts = ::fstatat(proc, "self/fd", &own, 0) == 0 && own.st_size > 0;
        while (const dirent* entry = ::readdir(folder.get())) {
            const auto pid = numberNamed(entry->d_name);
            if (!pid || *pid < 1)
                continue;
            const auto [found, isNew] = processes_.try_emplace(*pid);
            Process& process = found->second;
            process.seenAt = looks_;
            if (isNew)
                process.foundAt = looks_;
            const bool isDue = process.descriptors < 0 || (static_cast<std::size_t>(*pid) + looks_) % turns == 0 ||
                               (!tellsCounts && looks_ - process.foundAt < 2);
            if (!process.isForeign || isDue)
                lookInto(proc, *pid, process, isDue, tellsCounts);
            isWhole_ = isWhole_ && !process.isForeign;
        }
        std::erase_if(processes_, [this](const auto& each) {
            const bool isGone = each.second.seenAt != looks_;
            if (isGone)
                for (const std::int32_t number : each.second.held)
                    drop(each.first, number);
            return isGone;
        });
    }

    void lookInto(int proc, std::int32_t pid, Process& process, bool isDue, bool tellsCounts) {
        const std::string name = std::to_string(pid) + "/fd";
        struct stat status {};
        process.isForeign =
            ::fstatat(proc, name.c_str(), &status, 0) != 0 || (ownUid_ != 0 && status.st_uid != ownUid_);
        if (process.isForeign)
            process.descriptors = 0;
        else if (tellsCounts && status.st_size == 0) // a thread of the kernel's
            list(-1, pid, process);
        else if (isDue || (tellsCounts && status.st_size != process.descriptors))
            list(::openat(proc, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), pid, process);
        else
            return;
        if (!process.isForeign)
            process.descriptors = status.st_size;
    }

    /// Its descriptors, at most as many as any program has that draws.
    void list(int number, std::int32_t pid, Process& process) {
        constexpr int most = 4096;
        const std::vector<std::int32_t> before = std::exchange(process.held, {});
        process.computes = false;
        const Folder folder(number >= 0 ? ::fdopendir(number) : nullptr, ::closedir);
        int listed = 0;
        while (const dirent* entry = folder && listed++ < most ? ::readdir(folder.get()) : nullptr) {
            std::array<char, 128> link{};
            const auto held = numberNamed(entry->d_name);
            const ssize_t size =
                held ? ::readlinkat(::dirfd(folder.get()), entry->d_name, link.data(), link.size()) : -1;
            const std::string_view file(link.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
            process.computes = process.computes || file == "/dev/kfd";
            const auto node = nodes_.find(graphicsNode(file));
            if (node == nodes_.end())
                continue;
            process.held.push_back(*held);
            if (std::ranges::find(before, *held) == before.end())
                newHolders_.push_back(holder(pid, *held, *node));
        }
        for (const std::int32_t old : before)
            if (std::ranges::find(process.held, old) == process.held.end())
                drop(pid, old);
    }

    Holder holder(std::int32_t pid, std::int32_t number, const std::string& node) {
        const auto [device, isNew] = devices_.try_emplace(node);
        if (isNew)
            device->second.rest = graphicsRest(root_ + "/sys/class/drm/" + node + "/device");
        return {.pid = pid,
                .number = number,
                .device = &device->second,
                .info = SensorFile(root_ + "/proc/" + std::to_string(pid) + "/fdinfo/" + std::to_string(number))};
    }

    void drop(std::int32_t pid, std::int32_t number) {
        const auto isIt = [&](const Holder& each) { return each.pid == pid && each.number == number; };
        std::erase_if(newHolders_, isIt);
        for (auto& [key, client] : clients_)
            std::erase_if(client.holders, isIt);
    }

    /// What it held is to be listed anew.
    void distrust(const Holder& holder) {
        if (const auto process = processes_.find(holder.pid); process != processes_.end()) {
            process->second.descriptors = -1;
            std::erase(process->second.held, holder.number);
        }
    }

    std::optional<DrmUsage> usage(Holder& holder) {
        const auto text = holder.info.readText(room_.data(), room_.size());
        return text ? parseDrmUsage(*text) : std::nullopt;
    }

    void readNew() {
        for (Holder& each : std::exchange(newHolders_, {})) {
            if (each.device->look != Look::read) {
                newHolders_.push_back(std::move(each));
                continue;
            }
            const auto found = usage(each);
            if (!found)
                continue; // of another kind, or gone by now
            Client& client = clients_[Key(found->driver, found->address, found->client)];
            client.device = each.device;
            client.holders.push_back(std::move(each));
        }
    }

    /// False when nobody holds it any more.
    bool read(const Key& key, Client& client) {
        while (!client.holders.empty()) {
            if (client.device->look != Look::read) {
                if (client.device->look == Look::leave)
                    client.meter.setIdle();
                return true;
            }
            Holder& first = client.holders.front();
            const auto found = usage(first);
            if (found && found->client == std::get<2>(key) && found->driver == std::get<0>(key) &&
                found->address == std::get<1>(key)) {
                client.meter.take(*found, clock_());
                client.tells = found->tellsWork();
                if (!client.meter.shares().empty())
                    client.device->rest->note(true, now_);
                client.worker = worker(client);
                return true;
            }
            distrust(first);
            client.holders.erase(client.holders.begin());
        }
        return false;
    }

    /// Who works with it, where several processes hold it: one that was handed on, or that a child has from its parent.
    std::int32_t worker(Client& client) {
        const std::int32_t first = client.holders.front().pid;
        if (std::ranges::all_of(client.holders, [first](const Holder& each) { return each.pid == first; }))
            return first;
        const bool isKept =
            std::ranges::any_of(client.holders, [&client](const Holder& each) { return each.pid == client.worker; });
        std::int32_t busiest = isKept ? client.worker : first;
        std::uint64_t most = 0;
        for (Holder& each : client.holders) {
            const auto text =
                readFileAt(AT_FDCWD, (root_ + "/proc/" + std::to_string(each.pid) + "/stat").c_str(), 1024);
            const auto stat = text ? parseProcessStat(*text) : std::nullopt;
            const std::uint64_t ticks = stat ? stat->userTicks + stat->systemTicks : 0;
            // At first all that it ever used.
            const std::uint64_t before = std::exchange(each.ticks, ticks).value_or(0);
            if (ticks > before && ticks - before > most) {
                most = ticks - before;
                busiest = each.pid;
            }
        }
        return busiest;
    }

    std::optional<Taken> shares() {
        Taken taken{.at = now_};
        std::map<std::int32_t, double> percents;
        // By device and engine: who worked there, and all of them together.
        std::map<std::pair<const DeviceRest*, std::string_view>, std::map<std::int32_t, double>> engines;
        for (const auto& [key, client] : clients_) {
            if (!client.tells || !client.meter.isKnown() || client.device->look == Look::hold)
                continue;
            percents.try_emplace(client.worker, 0);
            for (const DrmMeter::Share& share : client.meter.shares())
                engines[{client.device->rest.get(), share.engine}][client.worker] += share.percent;
        }
        if (percents.empty())
            return {};
        for (const auto& [engine, workers] : engines) {
            double all = 0;
            for (const auto& [pid, percent] : workers)
                all += percent;
            // Work that waits behind another's counts as work with some drivers.
            const double scale = all > 100 ? 100 / all : 1;
            for (const auto& [pid, percent] : workers)
                percents[pid] = std::max(percents[pid], percent * scale);
            taken.shares.leastBusyPercent = std::max(taken.shares.leastBusyPercent, all * scale);
        }
        for (const auto& [pid, percent] : percents) {
            const auto process = processes_.find(pid);
            if (percent >= 1 || process == processes_.end() || !process->second.computes)
                taken.shares.programs.push_back({.pid = pid, .percent = percent});
        }
        taken.shares.hasAll = isWhole_;
        return taken;
    }

    const std::string root_;
    const std::set<std::string, std::less<>> nodes_;
    const SecondsClock clock_;
    const std::uint32_t ownUid_;
    double now_ = 0;
    std::optional<Taken> last_;
    std::optional<double> lookedAt_;
    std::uint64_t looks_ = 0;
    bool isWhole_ = false;
    std::unordered_map<std::int32_t, Process> processes_;
    /// By node: those of one device share their rest.
    std::map<std::string, Device, std::less<>> devices_;
    std::vector<Holder> newHolders_;
    std::map<Key, Client> clients_;
    std::array<char, 16384> room_{};
};

LinuxGraphicsClients::LinuxGraphicsClients(std::string root, std::shared_ptr<SlowLane> lane,
                                           std::shared_ptr<NvidiaGPUs> gpus, std::uint32_t ownUid)
    : root_(std::move(root)), lane_(std::move(lane)), gpus_(std::move(gpus)), ownUid_(ownUid) {}

LinuxGraphicsClients::~LinuxGraphicsClients() = default;

void LinuxGraphicsClients::begin() {
    isResting_ = false;
    if (gpus_)
        gpus_->setTellsPrograms(true);
    auto nodes = tellingNodes(root_);
    if (nodes.empty())
        return;
    const auto clients = std::make_shared<Clients>(root_, std::move(nodes), lane_->clock(), ownUid_);
    clients_.emplace(
        lane_, [clients] { return clients->take(); }, LanedReading<Taken>::Way::alwaysInLane);
}

void LinuxGraphicsClients::rest() {
    if (std::exchange(isResting_, true))
        return;
    clients_.reset();
    if (gpus_)
        gpus_->setTellsPrograms(false);
}

std::optional<GraphicsShares> LinuxGraphicsClients::read() {
    constexpr double longestAge = 15;
    if (isResting_)
        begin();
    std::optional<GraphicsShares> shares;
    if (const auto taken = clients_ ? clients_->read() : std::nullopt; taken && lane_->now() - taken->at <= longestAge)
        shares = taken->shares;
    if (!gpus_)
        return shares;
    for (const auto& reading : gpus_->readings())
        if (reading && reading->programs)
            shares = withPrograms(std::move(shares), *reading->programs);
    return shares;
}

} // namespace vantoro
