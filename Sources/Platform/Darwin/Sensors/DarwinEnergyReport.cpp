#include "Platform/Darwin/Sensors/DarwinEnergyReport.h"

#include <utility>

namespace vantoro {

namespace {

class DarwinEnergySample : public EnergySample {
public:
    DarwinEnergySample(const IOReportLibrary& library, IOReportChannels channels, std::shared_ptr<KeptTexts> texts)
        : library_(library), channels_(std::move(channels)), texts_(std::move(texts)) {}

    int channelCount() const override { return channels_.count(); }

    std::optional<std::string_view> channelName(int channel) const override {
        return kept(library_.channelGetChannelName(channels_.at(channel)));
    }

    std::optional<std::string_view> unitLabel(int channel) const override {
        return kept(library_.channelGetUnitLabel(channels_.at(channel)));
    }

    std::int64_t value(int channel) const override {
        return library_.simpleGetIntegerValue(channels_.at(channel), nullptr);
    }

private:
    std::optional<std::string_view> kept(CFStringRef string) const {
        CFTextBuffer buffer;
        const auto text = cfText(string, buffer);
        return text ? std::optional(texts_->keep(*text)) : std::nullopt;
    }

    IOReportLibrary library_;
    IOReportChannels channels_;
    std::shared_ptr<KeptTexts> texts_;
};

} // namespace

bool DarwinEnergyReport::load() {
    if (!library_)
        library_ = IOReportLibrary::open();
    return library_ && library_->canReadEnergy();
}

bool DarwinEnergyReport::subscribe() {
    if (!group_ && load())
        group_ = IOReportGroup::subscribe(*library_, CFSTR("Energy Model"), nullptr);
    return group_.has_value();
}

std::unique_ptr<EnergySample> DarwinEnergyReport::sample() {
    auto channels = group_ ? group_->sample() : std::nullopt;
    if (!channels)
        return nullptr;
    return std::make_unique<DarwinEnergySample>(*library_, std::move(*channels), texts_);
}

} // namespace vantoro
