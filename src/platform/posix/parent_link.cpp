#include "platform/parent_link.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/posix/parent_link.hpp"

namespace xlatr::platform {
namespace {

bool isPromised() {
  constexpr std::string_view kVariable = kParentLinkVariable;
  const std::size_t sign = kVariable.find('=');
  const std::string name(kVariable.substr(0, sign));
  const char* const value = std::getenv(name.c_str());  // NOLINT(concurrency-mt-unsafe): a program at its start
  return value != nullptr && kVariable.substr(sign + 1) == value;
}

// A program that was not started by us may have inherited the variable.
bool isSocket(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace

ParentLink::ParentLink() : socket_(isPromised() && isSocket(kParentLinkDescriptor) ? kParentLinkDescriptor : -1) {}

ParentLink::~ParentLink() {
  if (socket_ >= 0) {
    ::close(socket_);
  }
}

bool ParentLink::isCut() const {
  pollfd end{.fd = socket_, .events = 0, .revents = 0};
  return socket_ >= 0 && ::poll(&end, 1, 0) > 0;
}

void ParentLink::tellExitCode(int exitCode) const {
  const auto byte = static_cast<unsigned char>(exitCode);
  if (socket_ >= 0) {
    static_cast<void>(::send(socket_, &byte, sizeof byte, MSG_NOSIGNAL | MSG_DONTWAIT));
  }
}

void keepNewFilesPrivate() {
  ::umask(S_IRWXG | S_IRWXO);
}

}  // namespace xlatr::platform
