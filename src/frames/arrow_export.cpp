#include "frames/arrow_export.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <ios>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frames/frame.hpp"
#include "frames/frame_batch.hpp"
#include "util/mutex.hpp"
#include "xlatr/frames.h"

namespace xlatr {
namespace {

// Zeros for the attributes that a batch lacks: their values, and a validity that says so.
constexpr std::array<std::uint32_t, FrameBatch::kCapacity> kNoValues{};

constexpr std::size_t kFixedColumns = 8;
constexpr std::size_t kKindColumn = 1;

struct Column {
  const char* name;
  const char* format;
  bool nullable = false;
};

constexpr std::array<Column, kFixedColumns> kColumns = {
    Column{"time_ns", "l"}, Column{"kind", "C"}, Column{"bus", "S"},  Column{"id", "I"},
    Column{"flags", "S"},   Column{"dlc", "S"},  Column{"data", "z"}, Column{"text", "u", true},
};

std::vector<FrameAttribute> attributesOf(std::uint32_t mask) {
  std::vector<FrameAttribute> attributes;
  for (std::size_t at = 0; at < kFrameAttributeCount; ++at) {
    if ((mask >> at & 1U) != 0) {
      attributes.push_back(static_cast<FrameAttribute>(at));
    }
  }
  return attributes;
}

// ---- schemas

// What a schema refers to, children and texts. The strings of columns live forever.
struct SchemaParts {
  std::vector<ArrowSchema> children;
  std::vector<ArrowSchema*> pointers;
  ArrowSchema dictionary{};
};

// Children whose release a consumer has taken over are marked by null.
void releaseSchema(ArrowSchema* schema) {
  for (std::int64_t at = 0; at < schema->n_children; ++at) {
    if (ArrowSchema* const child = schema->children[at]; child->release != nullptr) {
      child->release(child);
    }
  }
  if (schema->dictionary != nullptr && schema->dictionary->release != nullptr) {
    schema->dictionary->release(schema->dictionary);
  }
  delete static_cast<SchemaParts*>(schema->private_data);
  schema->release = nullptr;
}

void makeSchema(ArrowSchema& schema, const Column& column, SchemaParts* parts) {
  schema = {};
  schema.format = column.format;
  schema.name = column.name;
  schema.flags = column.nullable ? ARROW_FLAG_NULLABLE : 0;
  schema.private_data = parts;
  schema.release = releaseSchema;
}

void makeKindSchema(ArrowSchema& schema) {
  auto parts = std::make_unique<SchemaParts>();
  makeSchema(parts->dictionary, {"", "u"}, nullptr);
  schema.dictionary = &parts->dictionary;
  schema.private_data = parts.release();
}

void makeFrameSchema(std::span<const FrameAttribute> attributes, ArrowSchema& out) {
  auto parts = std::make_unique<SchemaParts>();
  parts->children.resize(kFixedColumns + attributes.size());
  for (ArrowSchema& child : parts->children) {
    parts->pointers.push_back(&child);
  }
  for (std::size_t at = 0; at < kFixedColumns; ++at) {
    makeSchema(parts->children[at], kColumns[at], nullptr);
  }
  for (std::size_t at = 0; at < attributes.size(); ++at) {
    const Column column{frameAttributeName(attributes[at]).data(), "I", true};
    makeSchema(parts->children[kFixedColumns + at], column, nullptr);
  }
  makeKindSchema(parts->children[kKindColumn]);
  ArrowSchema schema;
  makeSchema(schema, {"", "+s"}, nullptr);
  schema.n_children = static_cast<std::int64_t>(parts->children.size());
  schema.children = parts->pointers.data();
  schema.private_data = parts.release();
  out = schema;
}

// ---- arrays

// Batches that consumers have released. Any thread, since consumers release where they like.
class BatchPool {
 public:
  std::unique_ptr<FrameBatch> take() {
    {
      const MutexLock lock(mutex_);
      if (!free_.empty()) {
        std::unique_ptr<FrameBatch> batch = std::move(free_.back());
        free_.pop_back();
        return batch;
      }
    }
    return std::make_unique<FrameBatch>();
  }

  void giveBack(std::unique_ptr<FrameBatch> batch) noexcept {
    constexpr std::size_t kKept = 4;
    batch->clear();
    const MutexLock lock(mutex_);
    if (free_.size() < kKept) {
      free_.push_back(std::move(batch));
    }
  }

  BatchPool() { free_.reserve(8); }

 private:
  Mutex mutex_;
  std::vector<std::unique_ptr<FrameBatch>> free_ XLATR_GUARDED_BY(mutex_);
};

// A batch that goes back to its pool with its last array.
class LentBatch {
 public:
  LentBatch(std::shared_ptr<BatchPool> pool, std::unique_ptr<FrameBatch> batch)
      : pool_(std::move(pool)), batch_(std::move(batch)) {}
  ~LentBatch() { pool_->giveBack(std::move(batch_)); }
  LentBatch(const LentBatch&) = delete;
  LentBatch& operator=(const LentBatch&) = delete;

  [[nodiscard]] const FrameBatch& operator*() const { return *batch_; }

 private:
  std::shared_ptr<BatchPool> pool_;
  std::unique_ptr<FrameBatch> batch_;
};

// What an array refers to. A consumer may move children out and release them apart, so each keeps the batch.
struct ArrayParts {
  std::shared_ptr<const LentBatch> batch;
  std::array<const void*, 3> buffers{};
  std::vector<ArrowArray> children;
  std::vector<ArrowArray*> pointers;
  ArrowArray dictionary{};
};

void releaseArray(ArrowArray* array) {
  for (std::int64_t at = 0; at < array->n_children; ++at) {
    if (ArrowArray* const child = array->children[at]; child->release != nullptr) {
      child->release(child);
    }
  }
  if (array->dictionary != nullptr && array->dictionary->release != nullptr) {
    array->dictionary->release(array->dictionary);
  }
  delete static_cast<ArrayParts*>(array->private_data);
  array->release = nullptr;
}

// An array with these buffers, of which the first is its validity or null.
ArrayParts& makeArray(ArrowArray& array, std::size_t length, std::initializer_list<const void*> buffers,
                      std::shared_ptr<const LentBatch> batch) {
  auto parts = std::make_unique<ArrayParts>();
  parts->batch = std::move(batch);
  std::ranges::copy(buffers, parts->buffers.begin());
  array = {};
  array.length = static_cast<std::int64_t>(length);
  array.null_count = *buffers.begin() == nullptr ? 0 : -1;
  array.n_buffers = static_cast<std::int64_t>(buffers.size());
  array.buffers = parts->buffers.data();
  array.release = releaseArray;
  array.private_data = parts.get();
  return *parts.release();
}

// The names of the kinds one after the other, and where each begins.
struct KindNames {
  KindNames() {
    for (std::size_t at = 0; at < kFrameKindCount; ++at) {
      characters += frameKindName(static_cast<FrameKind>(at));
      offsets[at + 1] = static_cast<std::int32_t>(characters.size());
    }
  }

  std::string characters;
  std::array<std::int32_t, kFrameKindCount + 1> offsets{};
};

const KindNames& kindNames() {
  static const KindNames names;
  return names;
}

// Bytes that a column refers to must be somewhere, even if there are none.
const void* bytesOf(const void* bytes) {
  return bytes == nullptr ? kNoValues.data() : bytes;
}

// Releases an array that does not become whole, with the children that it has so far.
class UnfinishedArray {
 public:
  UnfinishedArray() = default;
  ~UnfinishedArray() {
    if (array.release != nullptr) {
      array.release(&array);
    }
  }
  UnfinishedArray(const UnfinishedArray&) = delete;
  UnfinishedArray& operator=(const UnfinishedArray&) = delete;

  ArrowArray array{};
};

void makeFrameArray(const std::shared_ptr<const LentBatch>& lent, std::span<const FrameAttribute> attributes,
                    ArrowArray& out) {
  const FrameBatch& batch = **lent;
  const std::size_t rows = batch.size();
  UnfinishedArray unfinished;
  ArrowArray& array = unfinished.array;
  ArrayParts& parts = makeArray(array, rows, {nullptr}, lent);
  parts.children.resize(kFixedColumns + attributes.size());
  for (ArrowArray& child : parts.children) {
    parts.pointers.push_back(&child);
  }
  array.n_children = static_cast<std::int64_t>(parts.children.size());
  array.children = parts.pointers.data();
  std::size_t at = 0;
  const auto add = [&](std::initializer_list<const void*> buffers) -> ArrayParts& {
    return makeArray(parts.children[at++], rows, buffers, lent);
  };
  add({nullptr, batch.times().data()});
  ArrayParts& kinds = add({nullptr, batch.kinds().data()});
  add({nullptr, batch.buses().data()});
  add({nullptr, batch.ids().data()});
  add({nullptr, batch.flags().data()});
  add({nullptr, batch.dlcs().data()});
  add({nullptr, batch.dataOffsets().data(), bytesOf(batch.data().data())});
  add({batch.textValidity().data(), batch.textOffsets().data(), bytesOf(batch.text().data())});
  for (const FrameAttribute attribute : attributes) {
    const bool present = (batch.attributes() >> static_cast<unsigned>(attribute) & 1U) != 0;
    add({present ? static_cast<const void*>(batch.attributeValidity(attribute).data()) : kNoValues.data(),
         present ? static_cast<const void*>(batch.attribute(attribute).data()) : kNoValues.data()});
  }
  const KindNames& names = kindNames();
  makeArray(kinds.dictionary, kFrameKindCount, {nullptr, names.offsets.data(), names.characters.data()}, nullptr);
  parts.children[kKindColumn].dictionary = &kinds.dictionary;
  out = array;
  array.release = nullptr;
}

// ---- the stream

struct FrameArrowStream {
  std::unique_ptr<FrameSource> source;
  std::vector<FrameAttribute> attributes;
  std::shared_ptr<BatchPool> pool = std::make_shared<BatchPool>();
  Account account;
  std::string error;
};

FrameArrowStream& streamOf(ArrowArrayStream* stream) {
  return *static_cast<FrameArrowStream*>(stream->private_data);
}

// Runs a callback of the interface, which must not raise.
template <typename Action>
int answer(FrameArrowStream& stream, Action action) noexcept {
  const auto fail = [&stream](const char* text, int code) {
    try {
      stream.error = text;
    } catch (const std::bad_alloc&) {
      stream.error.clear();
    }
    return code;
  };
  try {
    action();
    return 0;
  } catch (const std::bad_alloc&) {
    return fail("there is no memory left", ENOMEM);
  } catch (const std::ios_base::failure& failure) {
    return fail(failure.what(), EIO);
  } catch (const std::exception& failure) {
    return fail(failure.what(), EINVAL);
  }
}

int getSchema(ArrowArrayStream* self, ArrowSchema* out) {
  FrameArrowStream& stream = streamOf(self);
  return answer(stream, [&] { makeFrameSchema(stream.attributes, *out); });
}

// An array without a release is the end.
void nextArray(FrameArrowStream& stream, ArrowArray& out) {
  std::unique_ptr<FrameBatch> batch = stream.pool->take();
  while (stream.source->read(*batch, stream.account)) {
    if (!batch->empty()) {
      makeFrameArray(std::make_shared<const LentBatch>(stream.pool, std::move(batch)), stream.attributes, out);
      return;
    }
  }
  out = {};
}

int getNext(ArrowArrayStream* self, ArrowArray* out) {
  FrameArrowStream& stream = streamOf(self);
  return answer(stream, [&] { nextArray(stream, *out); });
}

const char* getLastError(ArrowArrayStream* self) {
  const std::string& error = streamOf(self).error;
  return error.empty() ? nullptr : error.c_str();
}

void releaseStream(ArrowArrayStream* self) {
  delete static_cast<FrameArrowStream*>(self->private_data);
  self->release = nullptr;
}

}  // namespace

void exportArrow(std::unique_ptr<FrameSource> source, std::uint32_t attributes, ArrowArrayStream& out) {
  auto stream = std::make_unique<FrameArrowStream>();
  stream->source = std::move(source);
  stream->attributes = attributesOf(attributes);
  out = {.get_schema = getSchema,
         .get_next = getNext,
         .get_last_error = getLastError,
         .release = releaseStream,
         .private_data = stream.release()};
}

}  // namespace xlatr
