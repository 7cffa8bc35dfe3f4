// What both ends of the link between a process and the programs that it starts have to know.
#pragma once

namespace xlatr::platform {

// A socket in the started program, and the variable of the environment that says so. It is the first descriptor after
// the standard streams, so that those that are not to be inherited are all above it.
inline constexpr int kParentLinkDescriptor = 3;
inline constexpr char kParentLinkVariable[] = "XLATR_PARENT_LINK=3";

}  // namespace xlatr::platform
