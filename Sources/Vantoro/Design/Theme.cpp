#include "Design/Theme.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantoro {

namespace {

struct Pair {
    QRgb dark;
    QRgb light;
};

constexpr QRgb opaque(QRgb rgb) {
    return 0xFF000000U | rgb;
}

constexpr QRgb white(int percent) {
    return static_cast<QRgb>((percent * 255 + 50) / 100) << 24U | 0xFFFFFFU;
}

constexpr QRgb black(int percent) {
    return static_cast<QRgb>((percent * 255 + 50) / 100) << 24U;
}

constexpr QRgb shade(QRgb rgb, int percent) {
    return static_cast<QRgb>((percent * 255 + 50) / 100) << 24U | rgb;
}

constexpr Pair colors(Tone tone) {
    switch (tone) {
    case Tone::window:
        return {opaque(0x18191B), opaque(0xF3F3F5)};
    case Tone::panel:
        return {opaque(0x212326), opaque(0xFFFFFF)};
    case Tone::raised:
        return {opaque(0x292B2F), opaque(0xFFFFFF)};
    case Tone::cell:
        return {opaque(0x2F3237), opaque(0xE8EAED)};
    case Tone::well:
        return {opaque(0x3A3D42), opaque(0xDFE1E5)};
    case Tone::line:
        return {opaque(0x303338), opaque(0xE4E6E9)};
    case Tone::segment:
        return {opaque(0x2A2C30), opaque(0xE4E5E8)};
    case Tone::segmentSelected:
        return {opaque(0x44484E), opaque(0xFFFFFF)};
    case Tone::button:
        return {opaque(0x34373C), opaque(0xFFFFFF)};
    case Tone::buttonLine:
        return {white(7), opaque(0xD3D6DB)};
    case Tone::buttonHover:
        return {opaque(0x3E4147), opaque(0xF3F4F6)};
    case Tone::buttonPressed:
        return {opaque(0x2B2D31), opaque(0xE8EAED)};
    case Tone::hover:
        return {opaque(0x2A2D31), opaque(0xF3F4F6)};
    case Tone::tile:
        return {opaque(0x282B2F), opaque(0xF1F2F4)};
    case Tone::tileBusy:
        return {opaque(0x393D43), opaque(0xDFE2E6)};
    case Tone::tileTrack:
        return {white(12), black(10)};
    case Tone::textPrimary:
        return {opaque(0xF3F4F6), opaque(0x16181B)};
    case Tone::textSecondary:
        return {opaque(0xB1B6BE), opaque(0x50555D)};
    case Tone::textTertiary:
        return {opaque(0x8E949D), opaque(0x666C75)};
    case Tone::ink:
        return {opaque(0xC9CED6), opaque(0x3C4149)};
    case Tone::bar:
        return {opaque(0x7B828C), opaque(0x7A818B)};
    case Tone::blade:
        return {opaque(0x4B4F56), opaque(0xB9BEC6)};
    case Tone::area:
        return {shade(0xC9CED6, 8), shade(0x3C4149, 7)};
    case Tone::rampMark:
        return {opaque(0x6F7680), opaque(0x8B929B)};
    case Tone::accent:
        return {opaque(0x3D8BFF), opaque(0x0A6CF0)};
    case Tone::defaultButton:
        return {opaque(0x2F6FE4), opaque(0x2F6FE4)};
    case Tone::onAccent:
    case Tone::knob:
    case Tone::knobOnAccent:
        return {opaque(0xFFFFFF), opaque(0xFFFFFF)};
    case Tone::outline:
        return {white(9), black(10)};
    case Tone::shadow:
        return {black(50), black(18)};
    case Tone::dim:
        return {black(42), black(25)};
    case Tone::pill:
        return {opaque(0xF3F4F6), opaque(0x16181B)};
    case Tone::onPill:
        return {opaque(0x16181B), opaque(0xF3F4F6)};
    }
    return {};
}

// Fills hold 3:1 or more against window and panel, texts 4.5:1 or more against every surface.
constexpr std::array<Pair, Theme::heatStops> heatFills{{{opaque(0x8195AF), opaque(0x7588A3)},
                                                        {opaque(0x97B5AD), opaque(0x5B877E)},
                                                        {opaque(0xE8B44A), opaque(0xB07B0C)},
                                                        {opaque(0xF58D45), opaque(0xCF5A12)},
                                                        {opaque(0xF4626A), opaque(0xC22F3F)}}};
constexpr std::array<Pair, Theme::heatStops> heatTexts{{{opaque(0x9DB0C8), opaque(0x51637D)},
                                                        {opaque(0xA9C4BD), opaque(0x3D665E)},
                                                        {opaque(0xEDBB55), opaque(0x815400)},
                                                        {opaque(0xF89A57), opaque(0xA84408)},
                                                        {opaque(0xFF8087), opaque(0xAE2233)}}};

QColor pick(const Pair& pair, Theme::Appearance appearance) {
    return QColor::fromRgba(appearance == Theme::Appearance::dark ? pair.dark : pair.light);
}

std::size_t heldStop(int stop) {
    return static_cast<std::size_t>(std::clamp(stop, 0, Theme::heatStops - 1));
}

double luminance(const QColor& color) {
    const auto linear = [](float channel) {
        return channel <= 0.03928F ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// The colour mixed with as little of the other as it takes to do.
template <class Does>
QColor shaded(const QColor& color, const QColor& with, Does does) {
    constexpr int steps = 50;
    QColor tried = color;
    for (int step = 0; step <= steps; ++step) {
        const float share = static_cast<float>(step) / steps;
        const auto mixed = [share](float a, float b) { return a + (b - a) * share; };
        tried = QColor::fromRgbF(mixed(color.redF(), with.redF()), mixed(color.greenF(), with.greenF()),
                                 mixed(color.blueF(), with.blueF()));
        if (does(tried))
            break;
    }
    return tried;
}

} // namespace

double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

Theme::Theme(Appearance appearance, QObject* parent) : QObject(parent), appearance_(appearance) {}

template <class Value>
void Theme::assign(Value& member, const Value& value) {
    if (member == value)
        return;
    member = value;
    emit changed();
}

void Theme::setAppearance(Appearance appearance) {
    if (appearance == appearance_)
        return;
    appearance_ = appearance;
    matchAccent();
    emit changed();
}

void Theme::setReducesMotion(bool reduces) {
    assign(reducesMotion_, reduces);
}

void Theme::setIncreasesContrast(bool increases) {
    assign(increasesContrast_, increases);
}

void Theme::setTextScale(double scale) {
    constexpr double steps = 20;
    constexpr double largest = 1.5;
    assign(textScale_, std::clamp(std::round(scale * steps) / steps, 1.0, largest));
}

void Theme::setAccent(const QColor& accent) {
    if (accent == accent_)
        return;
    accent_ = accent;
    matchAccent();
    emit changed();
}

void Theme::matchAccent() {
    accentShape_ = accentFill_ = onAccentFill_ = knobOnAccent_ = QColor();
    if (!accent_.isValid())
        return;
    constexpr double forShapes = 3;
    constexpr double forTexts = 4.5;
    const bool isDark = appearance_ == Appearance::dark;
    const QColor light = pick(colors(Tone::onAccent), appearance_);
    const QColor dark = pick(colors(Tone::textPrimary), Appearance::light);
    accentShape_ = shaded(accent_.toRgb(), isDark ? Qt::white : Qt::black, [this](const QColor& tried) {
        return std::min({contrast(tried, pick(colors(Tone::window), appearance_)),
                         contrast(tried, pick(colors(Tone::panel), appearance_)),
                         contrast(tried, pick(colors(Tone::raised), appearance_))}) >= forShapes;
    });
    knobOnAccent_ = contrast(light, accentShape_) >= forShapes ? light : dark;
    onAccentFill_ = contrast(dark, accentShape_) >= forTexts && contrast(light, accentShape_) < forTexts ? dark : light;
    accentFill_ = shaded(accentShape_, Qt::black,
                         [this](const QColor& tried) { return contrast(onAccentFill_, tried) >= forTexts; });
}

QColor Theme::color(Tone tone) const {
    if (accent_.isValid()) {
        if (tone == Tone::accent)
            return accentShape_;
        if (tone == Tone::defaultButton)
            return accentFill_;
        if (tone == Tone::onAccent)
            return onAccentFill_;
        if (tone == Tone::knobOnAccent)
            return knobOnAccent_;
    }
    if (increasesContrast_) {
        if (tone == Tone::line || tone == Tone::buttonLine)
            tone = Tone::textTertiary;
        else if (tone == Tone::textTertiary)
            tone = Tone::textSecondary;
    }
    return pick(colors(tone), appearance_);
}

QColor Theme::heatFill(int stop) const {
    return pick(heatFills[heldStop(stop)], appearance_);
}

QColor Theme::heatText(int stop) const {
    return pick(heatTexts[heldStop(stop)], appearance_);
}

} // namespace vantoro
