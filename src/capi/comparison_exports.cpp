// The functions of frames.h that compare two traces.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "capi/frame_answers.hpp"
#include "capi/frame_handles.hpp"
#include "capi/frame_records.hpp"
#include "capi/open_stream.hpp"
#include "frames/comparison.hpp"
#include "frames/frame.hpp"
#include "frames/frame_selection.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {
namespace {

static_assert(XLATR_FIELD_COUNT == kFrameFieldCount);
static_assert(XLATR_FIELD_LIMIT >= kFrameFieldCount);
static_assert(XLATR_FIELD_ATTRIBUTES == static_cast<int>(FrameField::Attributes));

// A frame as it was told last.
struct ToldFrame {
  xlatr_frame record{};
  std::array<std::uint32_t, kFrameAttributeCount> attributes{};
};

struct Comparison {
  std::string error;
  ComparisonSettings settings;
  ComparisonResult result;
  std::array<ToldFrame, 2> told;
};

HandleTable<xlatr_comparison, Comparison>& comparisons() {
  return table<xlatr_comparison, Comparison>();
}

ComparisonSettings settingsOf(const xlatr_comparison_options* options) {
  xlatr_comparison_options known;
  if (!readRecord(options, known)) {
    refuse("options: the record does not begin with its size");
  }
  if ((known.kinds & ~std::uint32_t{kAllFrameKinds}) != 0) {
    refuse("kinds: there is no such kind");
  }
  if (known.ahead > ComparisonSettings::kMostAhead) {
    refuse("ahead: no more than 16,384 frames are searched");
  }
  if (known.most_differences > ComparisonSettings::kMostDifferences) {
    refuse("most_differences: no more than 100,000 are told");
  }
  ComparisonSettings settings;
  if (known.tolerance_known != 0) {
    settings.toleranceNs = known.tolerance_ns;
  }
  settings.texts = known.texts != 0;
  settings.attributes = known.attributes != 0;
  if (known.kinds != 0) {
    settings.kinds = static_cast<FrameKindSet>(known.kinds);
  }
  if (known.ahead != 0) {
    settings.ahead = known.ahead;
  }
  if (known.most_differences != 0) {
    settings.mostDifferences = known.most_differences;
  }
  return settings;
}

xlatr_comparison_summary recordOf(const ComparisonResult& result) {
  xlatr_comparison_summary record{};
  record.same = result.same() ? 1 : 0;
  record.differences = static_cast<std::uint32_t>(result.differences.size());
  record.tolerance_ns = result.toleranceNs;
  record.first_frames = result.frames[0];
  record.second_frames = result.frames[1];
  record.equal = result.equal;
  record.reordered = result.reordered;
  record.different = result.different;
  record.only_first = result.onlyIn[0];
  record.only_second = result.onlyIn[1];
  record.farthest_ns = result.farthestNs;
  std::ranges::copy(result.byField, record.different_by);
  return record;
}

const xlatr_frame* tell(const KeptFrame& kept, ToldFrame& told) {
  const Frame& frame = kept.frame;
  told.attributes = {};
  for (std::uint32_t left = frame.attributes.present(); left != 0; left &= left - 1) {
    const auto at = static_cast<std::size_t>(std::countr_zero(left));
    told.attributes[at] = frame.attributes.get(static_cast<FrameAttribute>(at)).value_or(0);
  }
  told.record = {.size = sizeof told.record,
                 .time_ns = frame.timeNs,
                 .place = frame.place,
                 .id = frame.id,
                 .bus = frame.bus,
                 .flags = frame.flags,
                 .dlc = frame.dlc,
                 .kind = static_cast<std::uint8_t>(frame.kind),
                 .has_text = static_cast<std::uint8_t>(frame.text ? 1 : 0),
                 .attributes = frame.attributes.present(),
                 .attribute = told.attributes.data(),
                 .data = kept.data.data(),
                 .text = kept.text.c_str(),
                 .data_size = kept.data.size(),
                 .text_size = kept.text.size()};
  return &told.record;
}

xlatr_code giveDifference(Comparison& comparison, std::uint32_t row, xlatr_difference* caller) {
  if (row >= comparison.result.differences.size()) {
    return XLATR_END;
  }
  const FrameDifference& difference = comparison.result.differences[row];
  xlatr_difference record{};
  record.fields = difference.fields;
  if (difference.kind != DifferenceKind::OnlySecond) {
    record.first = tell(difference.first, comparison.told[0]);
  }
  if (difference.kind != DifferenceKind::OnlyFirst) {
    record.second = tell(difference.second, comparison.told[1]);
  }
  return give(record, caller);
}

xlatr_code runComparison(Comparison& comparison, const xlatr_stream* first, const xlatr_stream* second) {
  const std::shared_ptr<Stream> one = streams().find(first);
  const std::shared_ptr<Stream> other = streams().find(second);
  if (one == nullptr || other == nullptr || one == other) {
    return XLATR_ERROR_HANDLE;
  }
  comparison.result = {};
  comparison.result =
      compareFrames(sourceOf(*one), one->account, sourceOf(*other), other->account, comparison.settings);
  return XLATR_OK;
}

}  // namespace
}  // namespace xlatr::capi

using namespace xlatr;        // NOLINT(google-build-using-namespace): this file is all border
using namespace xlatr::capi;  // NOLINT(google-build-using-namespace)

const char* xlatr_field_name(std::uint32_t field) {
  return field < kFrameFieldCount ? frameFieldName(static_cast<FrameField>(field)).data() : nullptr;
}

xlatr_code xlatr_comparison_create(const xlatr_comparison_options* options, xlatr_comparison** comparison) {
  return openHandle(comparisons(), comparison, [&](Comparison& made) {
    made.settings = settingsOf(options);
    return XLATR_OK;
  });
}

xlatr_code xlatr_comparison_run(xlatr_comparison* comparison, xlatr_stream* first, xlatr_stream* second) {
  return with(comparisons(), comparison, [&](Comparison& open) { return runComparison(open, first, second); });
}

xlatr_code xlatr_comparison_get_summary(xlatr_comparison* comparison, xlatr_comparison_summary* summary) {
  return with(comparisons(), comparison, [&](Comparison& open) { return give(recordOf(open.result), summary); });
}

xlatr_code xlatr_comparison_get_difference(xlatr_comparison* comparison, std::uint32_t row,
                                           xlatr_difference* difference) {
  return with(comparisons(), comparison, [&](Comparison& open) { return giveDifference(open, row, difference); });
}

const char* xlatr_comparison_error(xlatr_comparison* comparison) {
  return errorOf(comparisons(), comparison);
}

xlatr_code xlatr_comparison_close(xlatr_comparison* comparison) {
  return close(comparisons(), comparison);
}
