#include "Platform/Linux/Power/LinuxGraphicsClients.h"

#include "Platform/Linux/Power/DrmClients.h"
#include "Platform/Linux/Power/DrmSearch.h"
#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Reading/DeviceRest.h"
#include "Platform/Linux/Reading/SensorFile.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace vantoro {

/// All that the lane works with, owned by the reading.
class LinuxGraphicsClients::Clients {
public:
    Clients(std::string root, std::set<std::string, std::less<>> nodes, SecondsClock clock, std::uint32_t ownUid)
        : root_(std::move(root))
        , clock_(std::move(clock))
        , search_(root_, std::move(nodes), ownUid,
                  {.opened = [this](std::int32_t pid, std::int32_t number,
                                    const std::string& node) { hold(pid, number, node); },
                   .closed = [this](std::int32_t pid, std::int32_t number) { drop(pid, number); }}) {}
    Clients(const Clients&) = delete;
    Clients& operator=(const Clients&) = delete;

    std::optional<Taken> take() {
        constexpr double sameMomentSeconds = 0.2;
        const std::lock_guard lock(mutex_);
        if (lookedAt_ && clock_() - now_ < sameMomentSeconds)
            return last_;
        now_ = clock_();
        if (!lookedAt_ || now_ - *lookedAt_ >= lookSeconds) {
            lookedAt_ = now_;
            search_.look();
        }
        for (auto& [node, device] : devices_)
            device.look = device.rest->at(now_, !std::exchange(device.wasRead, true));
        readNew();
        for (auto client = clients_.begin(); client != clients_.end();)
            client = read(client->first, client->second) ? std::next(client) : clients_.erase(client);
        last_ = shares();
        return last_;
    }

    /// Closes the files; who held what is kept in mind.
    void rest() {
        const std::lock_guard lock(mutex_);
        last_.reset();
        ++rests_;
        for (auto& [key, client] : clients_)
            for (Holder& each : client.holders)
                newHolders_.push_back(std::move(each));
        clients_.clear();
        for (Holder& each : newHolders_)
            each.info = infoFile(each.pid, each.number);
    }

    const std::set<std::string, std::less<>>& nodes() const { return search_.nodes(); }

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
        bool isRead = false;
        bool tells = false;
    };
    /// Driver, address, number.
    using Key = std::tuple<std::string, std::string, std::uint64_t>;

    void hold(std::int32_t pid, std::int32_t number, const std::string& node) {
        const auto [device, isNew] = devices_.try_emplace(node);
        if (isNew)
            device->second.rest = graphicsRest(root_ + "/sys/class/drm/" + node + "/device");
        newHolders_.push_back({.pid = pid, .number = number, .device = &device->second, .info = infoFile(pid, number)});
    }

    SensorFile infoFile(std::int32_t pid, std::int32_t number) const {
        return SensorFile(root_ + "/proc/" + std::to_string(pid) + "/fdinfo/" + std::to_string(number));
    }

    void drop(std::int32_t pid, std::int32_t number) {
        const auto isIt = [&](const Holder& each) { return each.pid == pid && each.number == number; };
        std::erase_if(newHolders_, isIt);
        for (auto& [key, client] : clients_)
            std::erase_if(client.holders, isIt);
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
            if (client.device->look == Look::leave)
                client.meter.setIdle();
            // Whose work is not told is asked again when clients are looked for.
            if (client.device->look != Look::read || (client.isRead && !client.tells && lookedAt_ != now_))
                return true;
            Holder& first = client.holders.front();
            const auto found = usage(first);
            if (found && found->client == std::get<2>(key) && found->driver == std::get<0>(key) &&
                found->address == std::get<1>(key)) {
                client.meter.take(*found, clock_());
                client.tells = found->tellsWork();
                client.isRead = true;
                if (!client.meter.shares().empty())
                    client.device->rest->note(true, now_);
                client.worker = worker(client);
                return true;
            }
            search_.distrust(first.pid, first.number);
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
        if (isKept && client.meter.shares().empty())
            return client.worker;
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
        Taken taken{.rests = rests_};
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
            if (percent >= 1 || !search_.mayCompute(pid))
                taken.shares.programs.push_back({.pid = pid, .percent = percent});
        }
        taken.shares.hasAll = search_.sawAll();
        return taken;
    }

    std::mutex mutex_;
    const std::string root_;
    const SecondsClock clock_;
    DrmSearch search_;
    double now_ = 0;
    std::optional<Taken> last_;
    std::optional<double> lookedAt_;
    std::uint64_t rests_ = 0;
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
    if (clients_ && clients_->nodes() == nodes)
        return;
    reading_.reset();
    clients_.reset();
    if (nodes.empty())
        return;
    rests_ = 0;
    clients_ = std::make_shared<Clients>(root_, std::move(nodes), lane_->clock(), ownUid_);
    reading_.emplace(
        lane_, [clients = clients_] { return clients->take(); }, LanedReading<Taken>::Way::alwaysInLane);
}

void LinuxGraphicsClients::rest() {
    if (std::exchange(isResting_, true))
        return;
    if (gpus_)
        gpus_->setTellsPrograms(false);
    if (!clients_)
        return;
    ++rests_;
    lane_->submit([clients = clients_] { clients->rest(); });
}

std::optional<GraphicsShares> LinuxGraphicsClients::read() {
    if (isResting_)
        begin();
    std::optional<GraphicsShares> shares;
    // What was taken before a rest is of another time.
    if (auto taken = reading_ ? reading_->read() : std::nullopt; taken && taken->rests == rests_)
        shares = std::move(taken->shares);
    if (!gpus_)
        return shares;
    for (const auto& reading : gpus_->readings())
        if (reading && reading->programs)
            shares = withPrograms(std::move(shares), *reading->programs);
    return shares;
}

} // namespace vantoro
