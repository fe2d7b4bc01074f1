// The words of a verdict: its headline, its paragraph, its advice and its short cause phrase.
#pragma once

#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"

#include <string>
#include <vector>

namespace vantoro {

/// Sets the verdict's headline and detail and, where the machine is working, its advice. State, cooling,
/// awaitingReading and sustainedFor are read; `now` is the newest snapshot, `causes` the groups to blame, most
/// responsible first.
void narrate(Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes, const Format& format);

/// The cause of the verdict's state in a few words.
std::string causePhrase(const Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes);

} // namespace vantoro
