#include "Platform/Darwin/Sensors/DarwinStateReport.h"

#include "Platform/Darwin/Portable/ChipNames.h"

#include <utility>

namespace vantoro {

namespace {

class DarwinStateSample : public StateSample {
public:
    DarwinStateSample(const IOReportLibrary& library, IOReportChannels channels, std::shared_ptr<KeptTexts> texts)
        : library_(library), channels_(std::move(channels)), texts_(std::move(texts)) {}

    int channelCount() const override { return channels_.count(); }

    std::optional<std::string_view> channelName(int channel) const override {
        CFTextBuffer buffer;
        const auto name = cfText(library_.channelGetChannelName(channels_.at(channel)), buffer);
        return name ? std::optional(texts_->keep(coreChannelName(*name))) : std::nullopt;
    }

    int stateCount(int channel) const override { return library_.stateGetCount(channels_.at(channel)); }

    std::uint64_t residency(int channel, int state) const override {
        return library_.stateGetResidency(channels_.at(channel), state);
    }

    std::optional<std::string_view> stateName(int channel, int state) const override {
        CFTextBuffer buffer;
        const auto name = cfText(library_.stateGetNameForIndex(channels_.at(channel), state), buffer);
        return name ? std::optional(texts_->keep(*name)) : std::nullopt;
    }

private:
    IOReportLibrary library_;
    IOReportChannels channels_;
    std::shared_ptr<KeptTexts> texts_;
};

} // namespace

bool DarwinStateReport::load() {
    if (!library_)
        library_ = IOReportLibrary::open();
    return library_ && library_->canReadStates();
}

bool DarwinStateReport::subscribe() {
    if (!group_ && load())
        group_ = IOReportGroup::subscribe(*library_, CFSTR("CPU Stats"), CFSTR("CPU Core Performance States"));
    return group_.has_value();
}

std::unique_ptr<StateSample> DarwinStateReport::sample() {
    auto channels = group_ ? group_->sample() : std::nullopt;
    if (!channels)
        return nullptr;
    return std::make_unique<DarwinStateSample>(*library_, std::move(*channels), texts_);
}

} // namespace vantoro
