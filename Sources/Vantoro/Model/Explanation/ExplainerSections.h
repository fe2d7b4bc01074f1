// The sections of an explanation, each a pure function of what was measured and concluded.
#pragma once

#include "Model/History/History.h"
#include "Model/Records/Explanation.h"
#include "Model/Text/Format.h"

#include <optional>

namespace vantoro::explainer {

/// "Where things stand": the condition in a paragraph and the figures behind it.
Explanation::Section stateSection(const History& history, const Verdict& verdict, const Snapshot& now,
                                  const Format& format);

/// "What's drawing the power": the applications of the stretch that led up to now; none when none did noticeable work.
std::optional<Explanation::Section> drivingSection(const History& history, const Verdict& verdict, const Snapshot& now);

/// "What changed": whose work grew most when the ramp began; none without a ramp or without noticeable growth.
std::optional<Explanation::Section> triggerSection(const History& history, const Snapshot& now, const Format& format);

/// "Is this normal?"
Explanation::Section normalitySection(const Verdict& verdict, const Snapshot& now, const Format& format);

/// "What you can do": what is most likely to help comes first.
Explanation::Section actionSection(const Verdict& verdict, const Snapshot& now);

} // namespace vantoro::explainer
