// The long form of a verdict, in sections: what the report shows when it is asked for.
#pragma once

#include "Model/Records/Verdict.h"

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

} // namespace vantoro
