// The five high-level functions, and the last error.
#include <cstdlib>
#include <span>
#include <utility>

#include "capi/text_out.hpp"
#include "core/conversion_registry.hpp"
#include "util/failures.hpp"
#include "xlatr/objects.h"
#include "xlatr/xlatr.h"

using xlatr::ConversionRegistry;

namespace {

// The file count stays.
void freeTexts(ConversionResult& result) {
  std::free(std::exchange(result.text, nullptr));
  if (char** const files = std::exchange(result.files, nullptr); files != nullptr) {
    for (char* const file : std::span(files, result.file_count)) {
      std::free(file);
    }
    std::free(static_cast<void*>(files));
  }
}

}  // namespace

TraceFormat xlatr_get_formats_convertible_from(TraceFormat source) {
  return ConversionRegistry::instance().convertibleFrom(source);
}

TraceFormat xlatr_get_formats_convertible_to(TraceFormat targets) {
  return ConversionRegistry::instance().convertibleTo(targets);
}

int32_t xlatr_convert(const char* source, const char* target, const ConversionOptions* options,
                      ConversionResult* result) {
  return options == nullptr ? XLATR_BAD_ARGUMENT
                            : ConversionRegistry::instance().convert(source, target, *options, result);
}

int32_t xlatr_get_progress(ConversionProgress* progress) {
  return ConversionRegistry::instance().fillProgress(progress);
}

void xlatr_free(ConversionResult* result) {
  if (result != nullptr) {
    freeTexts(*result);
  }
}

void ConverterLastError_GetText(uint32_t threadId, char* buffer, uint32_t bufferSize) {
  xlatr::capi::copyText(xlatr::lastErrorText(threadId), buffer, bufferSize);
}
