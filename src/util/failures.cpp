#include "util/failures.hpp"

#include <map>
#include <utility>

#include "platform/thread.hpp"
#include "util/mutex.hpp"
#include "util/process_wide.hpp"

namespace xlatr {

ConverterGenericException::ConverterGenericException(std::string text)
    : ConverterGenericException(std::move(text), FailureKind::Generic) {}
ConverterGenericException::ConverterGenericException(std::string text, FailureKind kind)
    : text_(std::move(text)), kind_(kind) {}
ConverterGenericException::~ConverterGenericException() = default;

const char* ConverterGenericException::what() const noexcept {
  return text_.c_str();
}

ConverterParsingException::ConverterParsingException(std::string text)
    : ConverterGenericException(std::move(text), FailureKind::Parsing) {}
ConverterParsingException::~ConverterParsingException() = default;

ConverterProcessingException::ConverterProcessingException(std::string text)
    : ConverterGenericException(std::move(text), FailureKind::Processing) {}
ConverterProcessingException::~ConverterProcessingException() = default;

namespace {

// An entry stays until its thread fails again, so that the text can be asked for at any later time, even by another
// thread and after the failing one has ended.
struct LastErrorStore {
  Mutex lock;
  std::map<std::uint32_t, std::string> texts XLATR_GUARDED_BY(lock);
};

ProcessWide<LastErrorStore>& lastErrorStores() {
  static ProcessWide<LastErrorStore> made;
  return made;
}

[[maybe_unused]] const ProcessWide<LastErrorStore>& kStoresAtLoad = lastErrorStores();

}  // namespace

void raiseFailure(FailureKind kind, std::string text) {
  {
    auto& store = lastErrorStores().get();
    const MutexLock guard(store.lock);
    store.texts[platform::currentThreadId()] = text;
  }
  switch (kind) {
    case FailureKind::Parsing:
      throw ConverterParsingException(std::move(text));
    case FailureKind::Processing:
      throw ConverterProcessingException(std::move(text));
    case FailureKind::Generic:
      break;
  }
  throw ConverterGenericException(std::move(text));
}

void throwProcessingFailure(std::string text) {
  raiseFailure(FailureKind::Processing, std::move(text));
}

void throwParsingFailure(std::string_view word, std::string_view text) {
  std::string message;
  message.reserve(word.size() + text.size() + 5);
  message.append(word).append(": {").append(text).append("}");
  raiseFailure(FailureKind::Parsing, std::move(message));
}

std::string lastErrorText(std::uint32_t threadId) {
  LastErrorStore* const store = lastErrorStores().find();
  if (store == nullptr) {
    return {};
  }
  const MutexLock guard(store->lock);
  const auto entry = store->texts.find(threadId);
  return entry == store->texts.end() ? std::string() : entry->second;
}

}  // namespace xlatr
