// The sections of an explanation that judge and advise, each a pure function of what was measured and concluded.
#pragma once

#include "Model/Records/Explanation.h"
#include "Model/Records/Telemetry.h"
#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"

namespace vantoro {

/// "Is this normal?"
Explanation::Section normalitySection(const Verdict& verdict, const Snapshot& now, const Format& format);

/// "What you can do": what is most likely to help comes first.
Explanation::Section actionSection(const Verdict& verdict, const Snapshot& now);

} // namespace vantoro
