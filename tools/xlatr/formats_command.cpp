#include "formats_command.hpp"

#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "formats.hpp"
#include "output.hpp"

namespace xlatr::cli {

namespace {

std::string orDash(const std::string& text) {
  return text.empty() ? "-" : text;
}

std::string textOf() {
  std::vector<std::vector<std::string>> rows{
      {"FORMAT", "EXTENSION", "DESCRIPTION", "VERSIONS", "READS", "WRITES", "CONVERTS INTO"}};
  for (const TraceFormat format : allFormats()) {
    rows.push_back({formatName(format), formatExtension(format), formatDescription(format),
                    orDash(versionListText(formatVersions(format))), isConversionSource(format) ? "yes" : "no",
                    isConversionTarget(format) ? "yes" : "no",
                    orDash(nameList(xlatr_get_formats_convertible_from(format)))});
  }
  return tableText(rows);
}

nlohmann::ordered_json json() {
  auto array = nlohmann::ordered_json::array();
  for (const TraceFormat format : allFormats()) {
    nlohmann::ordered_json row;
    row["format"] = formatName(format);
    row["extension"] = formatExtension(format);
    row["description"] = formatDescription(format);
    row["versions"] = formatVersions(format);
    row["reads"] = isConversionSource(format);
    row["writes"] = isConversionTarget(format);
    row["targets"] = nlohmann::ordered_json::array();
    for (const TraceFormat target : formatsOf(xlatr_get_formats_convertible_from(format))) {
      row["targets"].push_back(formatName(target));
    }
    array.push_back(row);
  }
  return array;
}

}  // namespace

ExitCode runFormats(const FormatsArguments& arguments) {
  std::cout << (arguments.json ? json().dump(2) + "\n" : textOf());
  return ExitCode::Done;
}

}  // namespace xlatr::cli
