// The package note of an ELF file (section ".note.package"): a JSON object that says which package the file came with,
// such as {"type":"deb","name":"viewer","version":"1.2.3-1"}. Packagers and linkers write it, so it is read with the
// same care as any other file content.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace xlatr::platform {

// The JSON text of the first package note among the notes of one segment, a view into `notes`. Notes are in the byte
// order of this process. `alignment` is that of the segment: 8, or anything else for 4.
//
//   offset             size  meaning
//   0                  4     size of the owner with its terminator: 4
//   4                  4     size of the description
//   8                  4     type: 0xCAFE1A7E
//   12                 4     owner: "FDO" and a terminator
//   aligned after it         description, filled up with zeros; the next note starts aligned after it
[[nodiscard]] std::optional<std::string_view> findPackageNote(std::span<const std::byte> notes, std::size_t alignment);

// The first four numbers in the text of the field "version", the missing ones 0. Nothing if the object has no such
// text, or if there is no number in it. A number that does not fit becomes the largest that does.
[[nodiscard]] std::optional<std::array<std::uint32_t, 4>> packageNoteVersion(std::string_view json);

}  // namespace xlatr::platform
