// What becomes a row: one function for each message class that a CSV writer accepts.
#pragma once

#include "formats/asc/asc_message.hpp"
#include "formats/blf/blf_message.hpp"
#include "formats/csv/csv_message.hpp"
#include "formats/lin/lin_message.hpp"
#include "formats/native/session_message.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Fill `target` from a message of another format; whatever it held before is gone, except its separator and columns.
// Nothing is raised.
void mapToCsv(const BrixMessage& source, CsvMessage& target);
void mapToCsv(const SessionMessage& source, CsvMessage& target);
void mapToCsv(const AscMessage& source, CsvMessage& target);
// A message of more than 8 bytes leaves the row empty.
void mapToCsv(const KorlMessage& source, CsvMessage& target);
void mapToCsv(const BlfCanMessage& source, CsvMessage& target);
void mapToCsv(const BlfLinMessage& source, CsvMessage& target);
void mapToCsv(const ZelkBinaryMessage& source, CsvMessage& target);

}  // namespace xlatr
