// What became of conversions, as lines for people and as JSON for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "job.hpp"

namespace xlatr::cli {

// "drive.blf -> drive.mf4: 1,950 frames read, 1,950 written", with what was lost and where.
[[nodiscard]] std::string reportLine(const JobReport& report);

// Of several files: how many came over, and how.
[[nodiscard]] std::string summaryLine(const std::vector<JobReport>& reports);

// As docs/report.schema.json says.
[[nodiscard]] nlohmann::ordered_json reportJson(const std::vector<JobReport>& reports);

// What an account tells besides its sums, and whether the source was finished: "; 3 dropped: the target has no CAN FD
// frames (the first is line 17)".
[[nodiscard]] std::string remarksText(const xlatr_account& account, const xlatr_head& head);

// The reasons in an account, as in the report.
[[nodiscard]] nlohmann::ordered_json remarksJson(const xlatr_account& account);

// Prints JSON to stdout. Texts need not be UTF-8, JSON must be.
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& json);

}  // namespace xlatr::cli
