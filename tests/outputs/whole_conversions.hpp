// A file through xlatr_convert, into everything.
#pragma once

#include <string>

#include "outputs/report.hpp"

namespace outputs {

void reportConversions(Report& report, const std::string& source);

}  // namespace outputs
