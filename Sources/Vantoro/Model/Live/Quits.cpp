#include "Model/Live/Quits.h"

#include "Model/Diagnosis/ProcessKnowledge.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace vantoro {

namespace {

/// As long as a group that has ended can still be among those of the last minutes.
constexpr double endedSeconds = 120;
/// What is not going to change soon is looked at less often.
constexpr double eagerSeconds = 2 * Quitting::patienceSeconds;
constexpr std::chrono::milliseconds idleLook{2000};

QuitResult::Kind kindOf(const Quitting& quitting) {
    return quitting.refused() > 0 ? QuitResult::Kind::refused
           : quitting.hadEnded()  ? QuitResult::Kind::hadEnded
                                  : QuitResult::Kind::ended;
}

} // namespace

Quits::Quits(std::shared_ptr<ProcessControl> control, Clock now, Clock monotonic, SystemKind system)
    : control_(std::move(control)), now_(std::move(now)), monotonic_(std::move(monotonic)), system_(system) {
    connect(&timer_, &QTimer::timeout, this, &Quits::look);
}

void Quits::disable() {
    control_.reset();
    open_.clear();
    ended_.clear();
    result_.reset();
    timer_.stop();
}

int Quits::living(const ProcessGroup& group) const {
    return static_cast<int>(control_ ? livingOf(group).size() : group.members.size());
}

bool Quits::isKnownToLive(const ProcessAggregate& member) const {
    return control_ && (member.pid <= 1 || member.pid == control_->ownPid() || livingProcess(*control_, member));
}

std::vector<LivingProcess> Quits::livingOf(const ProcessGroup& group) const {
    std::vector<LivingProcess> living;
    for (const ProcessAggregate& member : group.members)
        if (const auto process = livingProcess(*control_, member))
            living.push_back(*process);
    // Who waits for the others to end may be in no list: it uses nothing. A session's leader is the shell that takes
    // the next command.
    const bool isJob =
        system_ != SystemKind::macos && group.kind == ProcessKind::commandLine &&
        std::ranges::any_of(group.members, [](const auto& member) { return member.owningAppName.has_value(); });
    std::vector<std::int32_t> leaders;
    for (const LivingProcess& process : living)
        if (isJob && process.groupPid != process.sessionPid &&
            std::ranges::find(leaders, process.groupPid) == leaders.end() &&
            std::ranges::find(living, process.groupPid, &LivingProcess::pid) == living.end())
            leaders.push_back(process.groupPid);
    // Its number is nobody else's while anyone of its process group lives.
    constexpr UnixSeconds whenever = std::numeric_limits<UnixSeconds>::max();
    for (const std::int32_t pid : leaders)
        if (const auto leader = livingProcess(*control_, {.pid = pid, .firstSeen = whenever}))
            living.push_back(*leader);
    return living;
}

std::string Quits::workingFolder(const ProcessGroup& group) const {
    if (!control_)
        return {};
    const std::vector<LivingProcess> living = livingOf(group);
    const auto leads = [](const LivingProcess& process) { return process.groupPid == process.pid; };
    const auto first = std::ranges::min_element(
        living, {}, [&](const LivingProcess& process) { return std::pair(!leads(process), process.startedAt); });
    return first != living.end() ? control_->folder(*first) : std::string();
}

bool Quits::holdsOwn(const ProcessGroup& group) const {
    return control_ && std::ranges::any_of(group.members, [this](const ProcessAggregate& member) {
               return member.pid == control_->ownPid();
           });
}

bool Quits::isEnded(const ProcessGroup& group) const {
    return control_ && std::ranges::find(ended_, group.key, &Ended::key) != ended_.end() && living(group) == 0;
}

std::optional<QuitQuestion> Quits::question(const ProcessGroup& group) {
    if (!control_)
        return std::nullopt;
    QuitQuestion question{
        .key = group.key, .name = friendlyName(group, system_), .processes = livingOf(group), .known = {}};
    if (question.processes.empty()) {
        note(QuitResult::Kind::hadEnded, question.name, static_cast<int>(group.members.size()));
        emit changed();
        return std::nullopt;
    }
    std::vector<LivingProcess> alive;
    control_->list(alive);
    for (const LivingProcess& process : alive)
        question.known.emplace(process.pid, process.birth);
    return question;
}

void Quits::begin(QuitQuestion question) {
    if (!control_ || open(question.key) != nullptr)
        return;
    std::erase_if(ended_, [&](const Ended& ended) { return ended.key == question.key; });
    Open& begun = open_.emplace_back(Open{.quitting = Quitting(std::move(question)), .lastStep = monotonic_()});
    begun.quitting.ask(*control_, begun.lastStep);
    settle();
}

void Quits::force(const std::string& key) {
    Open* const found = open(key);
    if (found == nullptr)
        return;
    found->lastStep = monotonic_();
    found->isNoted = false;
    found->quitting.force(*control_, found->lastStep);
    settle();
}

void Quits::attend(const std::string& key, bool isAttended) {
    if (Open* const found = open(key)) {
        found->isAttended = isAttended;
        settle();
    }
}

Quits::Open* Quits::open(const std::string& key) {
    const auto found = std::ranges::find_if(open_, [&](const Open& one) { return one.quitting.key() == key; });
    return found != open_.end() ? &*found : nullptr;
}

const Quitting* Quits::find(const std::string& key) const {
    const auto found = std::ranges::find_if(open_, [&](const Open& one) { return one.quitting.key() == key; });
    return found != open_.end() ? &found->quitting : nullptr;
}

void Quits::note(QuitResult::Kind kind, const std::string& name, int processes) {
    result_ = QuitResult{.kind = kind, .name = name, .processes = processes, .at = now_()};
    resultUntil_ = monotonic_() + noteSeconds;
    timer_.start(lookMilliseconds);
}

void Quits::look() {
    if (control_)
        for (Open& one : open_)
            one.quitting.look(*control_, monotonic_());
    settle();
}

void Quits::settle() {
    const double now = monotonic_();
    if (result_ && now >= resultUntil_)
        result_.reset();
    for (Open& one : open_) {
        const Quitting& quitting = one.quitting;
        if (quitting.stage() == Quitting::Stage::over) {
            const QuitResult::Kind kind = kindOf(quitting);
            note(kind, quitting.name(), kind == QuitResult::Kind::refused ? quitting.refused() : quitting.all());
            if (kind != QuitResult::Kind::refused)
                ended_.push_back({quitting.key(), now});
        } else if (quitting.stage() == Quitting::Stage::stuck && !std::exchange(one.isNoted, true)) {
            note(QuitResult::Kind::stuck, quitting.name(), quitting.running());
        } else if (quitting.stage() == Quitting::Stage::stillRunning && !one.isAttended &&
                   !std::exchange(one.isNoted, true)) {
            note(QuitResult::Kind::stillRunning, quitting.name(), quitting.running());
        }
    }
    std::erase_if(open_, [](const Open& one) { return one.quitting.stage() == Quitting::Stage::over; });
    std::erase_if(ended_, [now](const Ended& ended) { return now > ended.at + endedSeconds; });
    const bool isEager =
        result_ || std::ranges::any_of(open_, [now](const Open& one) { return now < one.lastStep + eagerSeconds; });
    if (isEager)
        timer_.start(lookMilliseconds);
    else if (!open_.empty())
        timer_.start(idleLook);
    else
        timer_.stop();
    emit changed();
}

} // namespace vantoro
