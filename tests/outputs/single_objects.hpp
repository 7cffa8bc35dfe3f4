// A file through the object families: its information object, its reader, and every writer with its messages.
#pragma once

#include <string>

#include "outputs/report.hpp"

namespace outputs {

void reportObjects(Report& report, const std::string& source);

}  // namespace outputs
