// The colours of the interface, in light and in dark, and what the system asks of its looks. The only place that holds
// a colour.
#pragma once

#include <cstdint>
#include <QColor>
#include <QObject>

namespace vantoro {

/// What a colour is for.
enum class Tone : std::uint8_t {
    window,          ///< window and pane background
    panel,           ///< panels, the menu-bar panel
    raised,          ///< sheet, alert
    cell,            ///< empty core cells
    well,            ///< empty gauge, icon tiles
    line,            ///< separators, chart grid
    segment,         ///< segmented control, chips
    segmentSelected, ///< its selection
    button,
    buttonLine,
    buttonHover,
    buttonPressed,
    hover, ///< row under the pointer
    tile,  ///< core tiles
    tileBusy,
    tileTrack, ///< empty part of a tile's two meters
    textPrimary,
    textSecondary,
    textTertiary,
    ink,           ///< sparklines, neutral chart lines, scrub rule
    bar,           ///< neutral meter fills
    blade,         ///< rotor blades
    area,          ///< under chart lines
    rampMark,      ///< dashed line at the start of the ramp
    accent,        ///< focus ring, switches, sliders
    defaultButton, ///< fill of a default button
    onAccent,      ///< text on it
    knob,          ///< the knobs of switches and sliders
    knobOnAccent,  ///< that of a switch that is on
    outline,       ///< round what floats
    shadow,        ///< under what floats
    dim,           ///< over the window behind a sheet
    pill,          ///< the scrub time's background
    onPill,
};

class Theme : public QObject {
    Q_OBJECT
public:
    enum class Appearance : std::uint8_t { light, dark };

    static constexpr int heatStops = 5;

    explicit Theme(Appearance appearance = Appearance::light, QObject* parent = nullptr);

    Appearance appearance() const { return appearance_; }
    void setAppearance(Appearance appearance);

    QColor color(Tone tone) const;
    /// The heat ramp by stop, 0 (idle) to 4 (extreme), for shapes and for words; beyond is the nearest stop.
    QColor heatFill(int stop) const;
    QColor heatText(int stop) const;

    /// The system asks for nothing to move.
    bool reducesMotion() const { return reducesMotion_; }
    void setReducesMotion(bool reduces);
    /// The system asks for stronger lines and texts.
    bool increasesContrast() const { return increasesContrast_; }
    void setIncreasesContrast(bool increases);
    /// Type is drawn at this multiple of its nominal size, 1 to 1.5.
    double textScale() const { return textScale_; }
    /// Held to its range and rounded to twentieths.
    void setTextScale(double scale);
    /// The system's accent; an invalid colour is the design's own. It is made lighter or darker as far as it must be to
    /// stand out from the surfaces, and what stands on it follows it.
    void setAccent(const QColor& accent);

signals:
    void changed();

private:
    template <class Value>
    void assign(Value& member, const Value& value);

    Appearance appearance_;
    bool reducesMotion_ = false;
    bool increasesContrast_ = false;
    double textScale_ = 1;
    void matchAccent();

    /// As the system has it, and what is made of it; all invalid where it has none.
    QColor accent_;
    QColor accentShape_;
    QColor accentFill_;
    QColor onAccentFill_;
    QColor knobOnAccent_;
};

/// How well two opaque colours are told apart, 1 (not at all) to 21, by their relative luminance.
double contrast(const QColor& one, const QColor& other);

} // namespace vantoro
