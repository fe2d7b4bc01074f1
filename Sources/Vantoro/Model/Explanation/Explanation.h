// The long form of a verdict, in sections: what the report shows when it is asked for; and all that the model
// concludes.
#pragma once

#include "Model/History/History.h"
#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"

#include <string>
#include <vector>

namespace vantoro {

struct Explanation {
    struct Row {
        std::string label;
        std::string value;
        std::string detail;
        bool emphasised = false;

        bool operator==(const Row&) const = default;
    };

    struct Section {
        /// The name of the icon beside the title.
        std::string symbol;
        std::string title;
        std::string body;
        std::vector<Row> rows;

        bool operator==(const Section&) const = default;
    };

    std::string headline;
    /// What the explanation is based on.
    std::string subhead;
    Severity severity = Severity::calm;
    std::vector<Section> sections;

    bool operator==(const Explanation&) const = default;
};

/// Writes the sectioned explanation from the local history. A pure function, run only when someone asks for the report.
struct LocalExplainer {
    LocalExplainer() = delete;

    /// Where things stand, what draws the power, what changed when the heating began, whether that is normal and what
    /// to do. `verdict` is the one concluded from this history, `snapshot` its newest. The second and third section are
    /// left out when there is nothing to say; missing readings choose gentler sentences.
    static Explanation explain(const History& history, const Verdict& verdict, const Snapshot& snapshot,
                               const Format& format);
};

/// "Where things stand": the condition in a paragraph and the figures behind it, those that this machine has.
Explanation::Section stateSection(const History& history, const Verdict& verdict, const Snapshot& now,
                                  const Format& format);

/// "Is this normal?"
Explanation::Section normalitySection(const Verdict& verdict, const Snapshot& now, const Format& format);

/// "What you can do": what is most likely to help comes first.
Explanation::Section actionSection(const Verdict& verdict, const Snapshot& now);

/// Everything that the model concludes from a history, for the reports that are printed.
struct Conclusion {
    /// The newest snapshot; the zero snapshot for an empty history.
    Snapshot snapshot;
    Verdict verdict;
    std::vector<ProcessGroup> suspects;
    Explanation explanation;
    ChartSeries series;
};

Conclusion conclude(const History& history, const Format& format);

} // namespace vantoro
