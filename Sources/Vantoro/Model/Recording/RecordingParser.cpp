#include "Model/History/History.h"
#include "Model/Processes/KnownIdentities.h"
#include "Model/Recording/JsonScanner.h"
#include "Model/Recording/Recording.h"
#include "Model/Recording/RecordingFields.h"
#include "Model/Recording/RecordingReasons.h"
#include "Model/Recording/RecordingTargets.h"

#include <cmath>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

/// Beyond this many rows a line is cut down to its busiest, so that no line can cost more than its own length.
constexpr std::size_t mostRows = 1024;
/// No machine has more; a list that goes on is cut off here.
constexpr std::size_t mostCores = 1024;

} // namespace

/// Fills one Snapshot from the events of its line. The first thing that is wrong is remembered and the rest of the line
/// passed over, because a line that turns out to be no JSON at all is worth saying first.
class RecordingParser::SnapshotEvents final : public JsonEvents {
public:
    ParsedLine<Snapshot> parse(std::string_view line) {
        snapshot_ = {};
        refusal_.clear();
        place_ = Place::line;
        ignoredDepth_ = 0;
        hasTimestamp_ = false;
        identities_.startLine();
        const std::optional<JsonFault> fault = scanJson(line, *this);
        if (fault && (!fault->isNumberTooLarge || refusal_.empty()))
            return notAnObject(fault);
        if (refusal_.empty() && !hasTimestamp_)
            refusal_ = "timestamp is missing";
        if (!refusal_.empty())
            return RecordingRefusal{.reason = std::move(refusal_)};
        return std::move(snapshot_);
    }

    void null() override {
        scalar("null", [this](auto target) -> Taken {
            if constexpr (std::is_same_v<decltype(target), Place>)
                return empty(target) ? Taken("") : std::nullopt;
            else
                return takeNull(target);
        });
    }

    void boolean(bool value) override {
        scalar("a truth value", [value](auto target) { return takeTruth(target, value); });
    }

    void number(const JsonNumber& number) override {
        scalar("a number", [&](auto target) { return takeNumber(target, number); });
    }

    void string(std::string_view text) override {
        scalar("a string", [&](auto target) { return takeText(target, text); });
    }

    void startObject() override {
        if (ignoredDepth_ > 0) {
            ++ignoredDepth_;
        } else if (place_ == Place::line) {
            place_ = Place::snapshot;
        } else if (place_ == Place::fans) {
            snapshot_.fans.emplace_back();
            place_ = Place::fan;
        } else if (place_ == Place::processes) {
            startRow();
        } else if (place_ == Place::cores) {
            place_ = Place::core;
            core_ = {};
        } else if (!startRecord()) {
            scalar("an object", [](auto /*target*/) { return Taken(); });
            ignoredDepth_ = 1;
        }
    }

    void key(std::string_view name) override {
        if (ignoredDepth_ > 0)
            return;
        target_ = {};
        Finder finder{name, *this};
        switch (place_) {
        case Place::snapshot:
            visitFields(snapshot_, finder);
            hasTimestamp_ = hasTimestamp_ || isTarget(snapshot_.timestamp);
            break;
        case Place::fan:
            visitFields(snapshot_.fans.back(), finder);
            break;
        case Place::temps:
            visitFields(snapshot_.temps, finder);
            break;
        case Place::power:
            visitFields(snapshot_.power, finder);
            break;
        case Place::cpu:
            visitFields(snapshot_.cpu, finder);
            break;
        case Place::memory:
            visitFields(snapshot_.memory, finder);
            break;
        case Place::process:
            visitRowFields(rowIdentity_, row_, finder);
            hasPid_ = hasPid_ || isTarget(rowIdentity_.pid);
            break;
        case Place::stalls:
            visitFields(snapshot_.stalls, finder);
            break;
        case Place::core:
            visitFields(core_, finder);
            break;
        default:
            break;
        }
    }

    void endObject() override {
        if (ignoredDepth_ > 0) {
            --ignoredDepth_;
        } else if (place_ == Place::process) {
            endRow();
        } else if (place_ == Place::fan) {
            place_ = Place::fans;
        } else if (place_ == Place::core) {
            endCore();
        } else {
            place_ = place_ == Place::snapshot ? Place::line : Place::snapshot;
        }
    }

    void startArray() override {
        const Place* const list = ignoredDepth_ == 0 && isInRecord() ? std::get_if<Place>(&target_) : nullptr;
        if (ignoredDepth_ > 0) {
            ++ignoredDepth_;
        } else if (list != nullptr && (isRecordList(*list) || isValueList(*list))) {
            startList(*list);
        } else {
            scalar("a list", [](auto /*target*/) { return Taken(); });
            ignoredDepth_ = 1;
        }
    }

    void endArray() override {
        if (ignoredDepth_ > 0)
            --ignoredDepth_;
        else
            place_ = Place::snapshot;
    }

private:
    using Place = RecordingPlace;

    struct Finder {
        std::string_view wanted;
        SnapshotEvents& events;

        template <class Field>
        void operator()(std::string_view name, Field&& field) const {
            if (name != wanted)
                return;
            events.name_ = name;
            events.target_ = targetOf(field);
        }

        template <class Field>
        static RecordingTarget targetOf(Field& field) {
            return &field;
        }
        static RecordingTarget targetOf(ProcessorShare<double>& share) { return ShareTarget{&share.percent}; }
        static RecordingTarget targetOf(HeldShare<double>& share) { return ShareTarget{&share.percent}; }
        static RecordingTarget targetOf(LaterFigure<double>& figure) { return &figure.number; }
        static RecordingTarget targetOf(HeldShare<std::optional<double>>& share) {
            return OptionalShareTarget{&share.percent};
        }
        static RecordingTarget targetOf(std::vector<FanReading>& /*list*/) { return Place::fans; }
        static RecordingTarget targetOf(std::vector<ProcessSample>& /*list*/) { return Place::processes; }
        static RecordingTarget targetOf(Temperatures& /*record*/) { return Place::temps; }
        static RecordingTarget targetOf(PowerReading& /*record*/) { return Place::power; }
        static RecordingTarget targetOf(CPULoad& /*record*/) { return Place::cpu; }
        static RecordingTarget targetOf(MemoryLoad& /*record*/) { return Place::memory; }
        static RecordingTarget targetOf(StallShares& /*record*/) { return Place::stalls; }
        static RecordingTarget targetOf(std::optional<std::vector<CoreReading>>& /*list*/) { return Place::cores; }
        static RecordingTarget targetOf(std::optional<std::vector<ThrottleReason>>& /*list*/) {
            return Place::throttle;
        }
        RecordingTarget targetOf(std::optional<std::vector<double>>& list) const {
            return &list == &events.snapshot_.dieSensors ? Place::dieSensors : Place::gpuSensors;
        }
    };

    template <class Field>
    bool isTarget(const Field& field) const {
        const auto* const target = std::get_if<Field*>(&target_);
        return target != nullptr && *target == &field;
    }

    bool isInRecord() const { return place_ != Place::line && !isRecordList(place_) && !isValueList(place_); }

    /// Gives a value to the target through `take`.
    template <class Take>
    void scalar(std::string_view found, Take take) {
        if (ignoredDepth_ > 0 || !refusal_.empty())
            return;
        if (place_ == Place::line)
            return refuse("not a JSON object");
        if (isRecordList(place_))
            return refuse(fmt::format("{} is {}, not an object", path(), found));
        std::visit(
            [&](auto target) {
                if constexpr (!std::is_same_v<decltype(target), std::monostate>) {
                    const Taken fault = take(target);
                    if (!fault)
                        refuse(fmt::format("{} is {}, not {}", path(), found, expectedValue(target)));
                    else if (!fault->empty())
                        refuse(fmt::format("{} {}", path(), *fault));
                }
            },
            target_);
        if (isValueList(place_))
            ++elementCount_;
    }

    /// The field in hand, as "processes[3].kind".
    std::string path() const {
        switch (place_) {
        case Place::fans:
            return fmt::format("fans[{}]", snapshot_.fans.size());
        case Place::fan:
            return fmt::format("fans[{}].{}", snapshot_.fans.size() - 1, name_);
        case Place::processes:
            return fmt::format("processes[{}]", rowCount_);
        case Place::cores:
            return fmt::format("cores[{}]", elementCount_);
        case Place::core:
            return fmt::format("cores[{}].{}", elementCount_, name_);
        case Place::throttle:
        case Place::dieSensors:
        case Place::gpuSensors:
            return fmt::format("{}[{}]", name_, elementCount_);
        case Place::process:
            return fmt::format("processes[{}].{}", rowCount_, name_);
        case Place::line:
        case Place::snapshot:
            return std::string(name_);
        default:
            return fmt::format("{}.{}", recordName_, name_);
        }
    }

    void refuse(std::string reason) {
        if (refusal_.empty())
            refusal_ = std::move(reason);
    }

    /// Enters the record that the key in hand names; false when it names none.
    bool startRecord() {
        const Place* const place = std::get_if<Place>(&target_);
        if (place == nullptr || isRecordList(*place) || isValueList(*place))
            return false;
        place_ = *place;
        recordName_ = name_;
        if (place_ == Place::temps)
            snapshot_.temps = {};
        else if (place_ == Place::power)
            snapshot_.power = {};
        else if (place_ == Place::cpu)
            snapshot_.cpu = {};
        else if (place_ == Place::stalls)
            snapshot_.stalls = {};
        else
            snapshot_.memory = {};
        return true;
    }

    void startList(Place list) {
        place_ = list;
        elementCount_ = 0;
        rowCount_ = 0;
        if (list == Place::fans)
            snapshot_.fans.clear();
        else if (list == Place::processes)
            snapshot_.processes.clear();
        else if (list == Place::cores)
            snapshot_.cores.emplace();
        else if (list == Place::throttle)
            target_ = WordsTarget{&snapshot_.throttle.emplace()};
        else
            target_ =
                NumbersTarget{&(list == Place::dieSensors ? snapshot_.dieSensors : snapshot_.gpuSensors).emplace()};
    }

    /// For a null in place of what may be absent; false where it may not.
    bool empty(Place place) {
        if (place == Place::stalls)
            snapshot_.stalls = {};
        else if (place == Place::cores)
            snapshot_.cores.reset();
        else if (place == Place::throttle)
            snapshot_.throttle.reset();
        else if (place == Place::dieSensors)
            snapshot_.dieSensors.reset();
        else if (place == Place::gpuSensors)
            snapshot_.gpuSensors.reset();
        else
            return false;
        return true;
    }

    void endCore() {
        place_ = Place::cores;
        ++elementCount_;
        if (snapshot_.cores->size() < mostCores)
            snapshot_.cores->push_back(core_);
    }

    void startRow() {
        place_ = Place::process;
        hasPid_ = false;
        row_ = {};
        // Cleared rather than made anew: the texts keep their storage from row to row.
        rowIdentity_.pid = 0;
        rowIdentity_.rawName.clear();
        rowIdentity_.displayName.clear();
        rowIdentity_.executablePath.clear();
        rowIdentity_.owningAppName.reset();
        rowIdentity_.owningAppPath.reset();
        rowIdentity_.user.clear();
        rowIdentity_.kind = ProcessKind::userApp;
    }

    void endRow() {
        place_ = Place::processes;
        if (!hasPid_)
            refuse(fmt::format("processes[{}].pid is missing", rowCount_));
        ++rowCount_;
        if (!refusal_.empty())
            return;
        row_.identity = identities_.of(rowIdentity_);
        if (snapshot_.processes.size() >= mostRows)
            History::keepBusiest(snapshot_.processes);
        snapshot_.processes.push_back(std::move(row_));
    }

    Snapshot snapshot_;
    std::string refusal_;
    Place place_ = Place::line;
    RecordingTarget target_;
    /// The known name that target_ stands for.
    std::string_view name_;
    /// The record's that it is in.
    std::string_view recordName_;
    /// How many containers are open below the value that is passed over.
    std::size_t ignoredDepth_ = 0;
    bool hasTimestamp_ = false;

    ProcessIdentity rowIdentity_;
    ProcessSample row_;
    std::size_t rowCount_ = 0;
    bool hasPid_ = false;

    CoreReading core_;
    /// In the list of cores, or of plain values, that the scan is in.
    std::size_t elementCount_ = 0;

    KnownIdentities identities_;
};

RecordingParser::RecordingParser() : events_(std::make_unique<SnapshotEvents>()) {}
RecordingParser::~RecordingParser() = default;
RecordingParser::RecordingParser(RecordingParser&&) noexcept = default;
RecordingParser& RecordingParser::operator=(RecordingParser&&) noexcept = default;

ParsedLine<Snapshot> RecordingParser::parseSnapshot(std::string_view line) {
    ParsedLine<Snapshot> parsed = events_->parse(line);
    if (const Snapshot* const snapshot = std::get_if<Snapshot>(&parsed)) {
        if (snapshot->timestamp < latest_)
            return RecordingRefusal{.reason = fmt::format("timestamp {} is earlier than {} on the line before",
                                                          snapshot->timestamp, latest_)};
        latest_ = snapshot->timestamp;
    }
    return parsed;
}

} // namespace vantoro
