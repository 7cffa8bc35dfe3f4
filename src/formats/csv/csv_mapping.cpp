#include "formats/csv/csv_mapping.hpp"

#include <algorithm>

#include "formats/trc/trc_message.hpp"

namespace xlatr {
namespace {

// The longest frame that there is, of CAN XL, has 2048 bytes.
constexpr std::uint32_t kMaxPayload = 2048;
constexpr std::size_t kDataRoom = 2050;

// A remote frame has a length and no data; a row keeps zeros for it. A length beyond any frame's comes from a damaged
// line and gets no memory.
void setData(CsvMessage& target, const BrixMessage& source) {
  target.data.reserve(kDataRoom);
  if (source.remote) {
    target.data.assign(std::min(source.length, kMaxPayload), 0);
  } else {
    target.data.assign(source.data.begin(), source.data.end());
  }
}

}  // namespace

void mapToCsv(const BrixMessage& source, CsvMessage& target) {
  target.reset();
  target.time = source.timeOffset;
  target.id = source.getIdentifier();
  target.valid = source.getValid();
  target.length = source.getLength();
  target.bus = source.bus;
  target.type = source.type;
  target.direction = source.direction;
  target.extended = source.extended;
  target.kind = source.kind;
  target.text = source.comment;
  target.remote = source.remote;
  target.reserved = static_cast<std::uint16_t>(source.reserved);  // -1, none, is 0xFFFF
  target.wideRow = true;
  target.vcid = source.xl.vcid.value_or(target.vcid);
  target.sdt = source.xl.sdt.value_or(target.sdt);
  target.af = source.xl.acceptance.value_or(target.af);
  target.rrs = source.xl.rrs.value_or(target.rrs);
  target.sec = source.xl.sec.value_or(target.sec);
  setData(target, source);
}

}  // namespace xlatr
