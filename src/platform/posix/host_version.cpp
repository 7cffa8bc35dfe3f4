#include "platform/host_version.hpp"

#include <link.h>

#include <bit>
#include <cstddef>
#include <span>

#include "platform/posix/package_note.hpp"

namespace xlatr::platform {

namespace {

using ProgramHeader = ElfW(Phdr);

// Nothing guarantees that notes are loaded; only what is in a loaded segment may be read.
bool isLoaded(const ProgramHeader& notes, std::span<const ProgramHeader> headers) {
  for (const ProgramHeader& header : headers) {
    if (header.p_type == PT_LOAD && notes.p_vaddr >= header.p_vaddr && notes.p_memsz <= header.p_memsz &&
        notes.p_vaddr - header.p_vaddr <= header.p_memsz - notes.p_memsz) {
      return true;
    }
  }
  return false;
}

// Stops at the first object, which is the program itself; the shared libraries come after it.
int readProgram(dl_phdr_info* program, std::size_t /*size*/, void* result) {
  auto& version = *static_cast<HostVersion*>(result);
  const std::span<const ProgramHeader> headers(program->dlpi_phdr, program->dlpi_phnum);
  for (const ProgramHeader& header : headers) {
    if (header.p_type != PT_NOTE || !isLoaded(header, headers)) {
      continue;
    }
    const auto* const start = std::bit_cast<const std::byte*>(program->dlpi_addr + header.p_vaddr);
    const auto note = findPackageNote({start, header.p_memsz}, header.p_align);
    if (const auto parts = note ? packageNoteVersion(*note) : std::nullopt) {
      version = {HostVersionState::Found, *parts};
      break;
    }
  }
  return 1;
}

}  // namespace

HostVersion readHostVersion() {
  HostVersion version;
  ::dl_iterate_phdr(readProgram, &version);
  return version;
}

}  // namespace xlatr::platform
