#pragma once
// The scripts and styles the offline pivot page inlines, from the npm
// packages scripts/third-party.sh fetches (pinned, sha256-checked): the
// build embeds them (cmake/Statistics.cmake generates their definition).
#include <string_view>

namespace hb::statistics {

struct PivotAssets {
    std::string_view jquery;         // jquery 3.8.0, jquery.min.js
    std::string_view jqueryUi;       // jquery-ui 1.14.2, jquery-ui.min.js
    std::string_view pivotScript;    // pivottable 2.23.0, pivot.min.js
    std::string_view pivotStyle;     // pivottable 2.23.0, pivot.min.css
    std::string_view jqueryLicence;  // each package's licence text
    std::string_view jqueryUiLicence;
    std::string_view pivotLicence;
};

const PivotAssets& pivotAssets();

}  // namespace hb::statistics
