#include "formats/mf4/block_conversion.hpp"

namespace xlatr {

const std::string& ChannelConversionBlock::unitText() {
  if (!unitText_) {
    unitText_ = readText(stream(), link(kUnit));
  }
  return *unitText_;
}

std::optional<double> ChannelConversionBlock::evaluate(double value) const {
  switch (static_cast<MdfConversionType>(data.ccType)) {
    case MdfConversionType::Linear:
      return data.ccVal.size() == 2 && data.ccVal[1] == 0.0 ? std::optional(data.ccVal[0]) : std::nullopt;
    case MdfConversionType::ValueToValue:
      return lookUp(value);
  }
  return std::nullopt;
}

// A record looks up every field that it has, so the table is made ready once.
std::optional<double> ChannelConversionBlock::lookUp(double value) const {
  if (!table_) {
    table_.emplace(data.ccVal);
  }
  return table_->lookUp(value);
}

std::vector<TreeChild> ChannelConversionBlock::children() {
  return {{kUnit, &unit_}};
}

}  // namespace xlatr
