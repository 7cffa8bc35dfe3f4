#include "platform/module_path.hpp"

#include <dlfcn.h>
#include <stdlib.h>

#include <memory>
#include <new>

namespace xlatr::platform {

namespace {

struct Freer {
  void operator()(char* memory) const { ::free(memory); }
};

std::string resolve(const char* path) {
  const std::unique_ptr<char, Freer> resolved(::realpath(path, nullptr));
  return resolved ? std::string(resolved.get()) : std::string();
}

std::string findModuleDirectory() {
  Dl_info module{};
  std::string path;
  if (::dladdr(reinterpret_cast<const void*>(&moduleDirectory), &module) != 0 && module.dli_fname != nullptr) {
    path = resolve(module.dli_fname);
  }
  if (path.empty()) {
    // The name of a program is what it was called by, which may not be a path to it.
    path = resolve("/proc/self/exe");
  }
  return path.substr(0, path.find_last_of(pathSeparator()) + (path.rfind(pathSeparator()) == 0 ? 1 : 0));
}

const std::string& knownModuleDirectory() {
  static const std::string directory = findModuleDirectory();
  return directory;
}

// Found while the library is loaded: the loader keeps a relative path as it was given, and that leads elsewhere once
// the program has changed its directory. Nobody could catch a failure there; it is looked for again then.
[[maybe_unused]] const bool kFoundAtLoad = []() noexcept {
  try {
    return !knownModuleDirectory().empty();
  } catch (const std::bad_alloc&) {
    return false;
  }
}();

}  // namespace

std::string moduleDirectory() {
  return knownModuleDirectory();
}

char pathSeparator() {
  return '/';
}

}  // namespace xlatr::platform
