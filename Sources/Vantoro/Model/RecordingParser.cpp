#include "Model/EnumNames.h"
#include "Model/History.h"
#include "Model/JsonScanner.h"
#include "Model/KnownIdentities.h"
#include "Model/Recording.h"
#include "Model/RecordingFields.h"
#include "Model/RecordingReasons.h"

#include <cmath>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

/// Beyond this many rows a line is cut down to its busiest, so that no line can cost more than its own length.
constexpr std::size_t mostRows = 1024;

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
        scalar("null", [](auto target) {
            if constexpr (std::is_same_v<decltype(target), std::optional<std::string>*>) {
                target->reset();
                return true;
            }
            return false;
        });
    }

    void boolean(bool /*value*/) override {
        scalar("a truth value", [](auto /*target*/) { return false; });
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
        } else if (!startRecord()) {
            scalar("an object", [](auto /*target*/) { return false; });
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
        } else {
            place_ = place_ == Place::snapshot ? Place::line : Place::snapshot;
        }
    }

    void startArray() override {
        const Place* const list = ignoredDepth_ == 0 && isInRecord() ? std::get_if<Place>(&target_) : nullptr;
        if (ignoredDepth_ > 0) {
            ++ignoredDepth_;
        } else if (list != nullptr && *list == Place::fans) {
            snapshot_.fans.clear();
            place_ = Place::fans;
        } else if (list != nullptr && *list == Place::processes) {
            snapshot_.processes.clear();
            rowCount_ = 0;
            place_ = Place::processes;
        } else {
            scalar("a list", [](auto /*target*/) { return false; });
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
    /// Where in the line the scan stands: in one of its records, or between the elements of a list.
    enum class Place { line, snapshot, fans, fan, temps, power, cpu, memory, processes, process };

    struct Share {
        double* percent;
    };

    /// What the value after a key goes to; nothing for an unknown key.
    using Target = std::variant<std::monostate, double*, Share, std::uint64_t*, std::int32_t*, std::string*,
                                std::optional<std::string>*, Cooling*, ThermalPressure*, ProcessKind*, Place>;

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
        static Target targetOf(Field& field) {
            return &field;
        }
        static Target targetOf(ProcessorShare<double>& share) { return Share{&share.percent}; }
        static Target targetOf(std::vector<FanReading>& /*list*/) { return Place::fans; }
        static Target targetOf(std::vector<ProcessSample>& /*list*/) { return Place::processes; }
        static Target targetOf(Temperatures& /*record*/) { return Place::temps; }
        static Target targetOf(PowerReading& /*record*/) { return Place::power; }
        static Target targetOf(CPULoad& /*record*/) { return Place::cpu; }
        static Target targetOf(MemoryLoad& /*record*/) { return Place::memory; }
    };

    template <class Field>
    bool isTarget(const Field& field) const {
        const auto* const target = std::get_if<Field*>(&target_);
        return target != nullptr && *target == &field;
    }

    bool isInRecord() const { return place_ != Place::line && place_ != Place::fans && place_ != Place::processes; }

    /// Gives a value to the target through `take`, which says whether it is of the target's type.
    template <class Take>
    void scalar(std::string_view found, Take take) {
        if (ignoredDepth_ > 0 || !refusal_.empty())
            return;
        if (place_ == Place::line)
            return refuse("not a JSON object");
        if (!isInRecord())
            return refuse(fmt::format("{} is {}, not an object", path(), found));
        std::visit(
            [&](auto target) {
                if constexpr (!std::is_same_v<decltype(target), std::monostate>) {
                    if (!take(target))
                        refuse(fmt::format("{} is {}, not {}", path(), found, expected(target)));
                }
            },
            target_);
    }

    template <class Other>
    bool takeNumber(Other /*target*/, const JsonNumber& /*number*/) {
        return false;
    }

    bool takeNumber(double* target, const JsonNumber& number) {
        *target = number.value;
        if (!std::isfinite(number.value))
            refuse(fmt::format("{} is not a finite number", path()));
        return true;
    }

    bool takeNumber(Share target, const JsonNumber& number) {
        takeNumber(target.percent, number);
        if (!(number.value >= 0 && number.value <= 100))
            refuse(fmt::format("{} is {}, outside 0 to 100", path(), numberText(number)));
        return true;
    }

    bool takeNumber(std::uint64_t* target, const JsonNumber& number) {
        if (!number.wholeMagnitude || (number.isNegative && *number.wholeMagnitude != 0))
            refuseWhole(number, "0 to 18446744073709551615");
        else
            *target = *number.wholeMagnitude;
        return true;
    }

    bool takeNumber(std::int32_t* target, const JsonNumber& number) {
        const std::uint64_t most = number.isNegative ? 2147483648U : 2147483647U;
        if (!number.wholeMagnitude || *number.wholeMagnitude > most) {
            refuseWhole(number, "-2147483648 to 2147483647");
        } else {
            const auto magnitude = static_cast<std::int64_t>(*number.wholeMagnitude);
            *target = static_cast<std::int32_t>(number.isNegative ? -magnitude : magnitude);
        }
        return true;
    }

    void refuseWhole(const JsonNumber& number, std::string_view range) {
        const bool isFraction = !number.wholeMagnitude && std::trunc(number.value) != number.value;
        if (!std::isfinite(number.value))
            refuse(fmt::format("{} is not a finite number", path()));
        else if (isFraction)
            refuse(fmt::format("{} is {}, not a whole number", path(), numberText(number)));
        else
            refuse(fmt::format("{} is {}, outside {}", path(), numberText(number), range));
    }

    template <class Other>
    bool takeText(Other target, std::string_view text) {
        if constexpr (std::is_same_v<Other, std::string*>) {
            target->assign(text);
            return true;
        } else if constexpr (std::is_same_v<Other, std::optional<std::string>*>) {
            target->emplace(text);
            return true;
        } else if constexpr (isWord<Other>) {
            using Enum = std::remove_pointer_t<Other>;
            if (const std::optional<Enum> named = caseNamed<Enum>(text))
                *target = *named;
            else
                refuse(fmt::format("{} is {}, not {}", path(), quoted(text), wordsFor<Enum>()));
            return true;
        } else {
            return false;
        }
    }

    template <class Pointer>
    static constexpr bool isWord = std::is_pointer_v<Pointer>&& std::is_enum_v<std::remove_pointer_t<Pointer>>;

    template <class Other>
    static std::string_view expected(Other target) {
        if constexpr (std::is_same_v<Other, Place>)
            return target == Place::fans || target == Place::processes ? "a list" : "an object";
        else if constexpr (std::is_same_v<Other, std::string*> || std::is_same_v<Other, std::optional<std::string>*> ||
                           isWord<Other>)
            return "a string";
        else
            return "a number";
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
        case Place::process:
            return fmt::format("processes[{}].{}", rowCount_, name_);
        case Place::temps:
            return fmt::format("temps.{}", name_);
        case Place::power:
            return fmt::format("power.{}", name_);
        case Place::cpu:
            return fmt::format("cpu.{}", name_);
        case Place::memory:
            return fmt::format("memory.{}", name_);
        default:
            return std::string(name_);
        }
    }

    void refuse(std::string reason) {
        if (refusal_.empty())
            refusal_ = std::move(reason);
    }

    /// Enters the record that the key in hand names; false when it names none.
    bool startRecord() {
        const Place* const place = std::get_if<Place>(&target_);
        if (place == nullptr || *place == Place::fans || *place == Place::processes)
            return false;
        place_ = *place;
        if (place_ == Place::temps)
            snapshot_.temps = {};
        else if (place_ == Place::power)
            snapshot_.power = {};
        else if (place_ == Place::cpu)
            snapshot_.cpu = {};
        else
            snapshot_.memory = {};
        return true;
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
    Target target_;
    /// The known name that target_ stands for.
    std::string_view name_;
    /// How many containers are open below the value that is passed over.
    std::size_t ignoredDepth_ = 0;
    bool hasTimestamp_ = false;

    ProcessIdentity rowIdentity_;
    ProcessSample row_;
    std::size_t rowCount_ = 0;
    bool hasPid_ = false;

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
