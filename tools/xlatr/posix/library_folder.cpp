#include "library_folder.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "xlatr/objects.h"

namespace xlatr::cli {

std::string libraryFolder() {
  Dl_info module{};
  if (::dladdr(reinterpret_cast<const void*>(&BlfReader_Construct), &module) == 0 || module.dli_fname == nullptr) {
    return {};
  }
  std::error_code error;
  return std::filesystem::canonical(module.dli_fname, error).parent_path().string();
}

bool isExecutable(const std::string& path) {
  return ::access(path.c_str(), X_OK) == 0;
}

}  // namespace xlatr::cli
