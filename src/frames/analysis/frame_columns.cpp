#include "frames/analysis/frame_columns.hpp"

namespace xlatr {
namespace {

FrameColumns::Attribute columnOf(const FrameBatch& batch, FrameAttribute attribute) {
  if ((batch.attributes() >> static_cast<unsigned>(attribute) & 1U) == 0) {
    return {};
  }
  return {batch.attribute(attribute).data(), batch.attributeValidity(attribute).data()};
}

}  // namespace

FrameColumns columnsOf(const FrameBatch& batch) {
  return {.rows = batch.size(),
          .times = batch.times().data(),
          .kinds = batch.kinds().data(),
          .buses = batch.buses().data(),
          .ids = batch.ids().data(),
          .flags = batch.flags().data(),
          .dlcs = batch.dlcs().data(),
          .dataOffsets = batch.dataOffsets().data(),
          .data = batch.data().data(),
          .places = batch.places().data(),
          .busState = columnOf(batch, FrameAttribute::BusState),
          .txErrors = columnOf(batch, FrameAttribute::TxErrors),
          .rxErrors = columnOf(batch, FrameAttribute::RxErrors)};
}

}  // namespace xlatr
