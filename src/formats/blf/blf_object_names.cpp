// The objects of a log that become no frame, by name: they are counted, and users are told what they were.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "formats/blf/blf_object_frames.hpp"

namespace xlatr {
namespace {

struct ObjectName {
  std::uint32_t type;
  std::string_view name;
};

constexpr auto kNames = std::to_array<ObjectName>({
    {22, "MOST spy frame"},
    {23, "MOST control frame"},
    {24, "MOST light and lock"},
    {25, "MOST statistics"},
    {29, "FlexRay frame"},
    {30, "FlexRay synchronization"},
    {32, "MOST packet"},
    {33, "MOST packet"},
    {34, "MOST hardware mode"},
    {35, "MOST register"},
    {36, "MOST register"},
    {37, "MOST network state"},
    {38, "MOST data loss"},
    {39, "MOST trigger"},
    {40, "FlexRay cycle start"},
    {41, "FlexRay frame"},
    {45, "FlexRay status"},
    {46, "GPS position"},
    {47, "FlexRay error"},
    {48, "FlexRay status"},
    {49, "FlexRay cycle start"},
    {50, "FlexRay frame"},
    {51, "clock time"},
    {55, "J1708 message"},
    {56, "J1708 virtual message"},
    {66, "FlexRay frame"},
    {67, "MOST statistics"},
    {68, "MOST light"},
    {69, "MOST allocation table"},
    {70, "MOST stress"},
    {71, "Ethernet frame"},
    {76, "MOST message"},
    {77, "MOST packet"},
    {78, "MOST Ethernet packet"},
    {79, "MOST message fragment"},
    {80, "MOST packet fragment"},
    {81, "MOST Ethernet packet fragment"},
    {82, "MOST system event"},
    {83, "MOST allocation table"},
    {84, "MOST message"},
    {85, "MOST packet"},
    {90, "serial event"},
    {93, "WLAN frame"},
    {94, "WLAN statistics"},
    {95, "MOST electrical control line"},
    {97, "AFDX frame"},
    {98, "AFDX statistics"},
    {99, "K-line status"},
    {102, "Ethernet error"},
    {103, "Ethernet status"},
    {106, "AFDX status"},
    {107, "AFDX bus statistics"},
    {109, "AFDX error"},
    {110, "ARINC 429 error"},
    {111, "ARINC 429 status"},
    {112, "ARINC 429 bus statistics"},
    {113, "ARINC 429 word"},
    {114, "Ethernet statistics"},
    {118, "test structure"},
    {119, "diagnostic request"},
    {120, "Ethernet frame"},
    {121, "Ethernet frame"},
    {122, "Ethernet error"},
    {123, "Ethernet error"},
    {124, "function bus object"},
    {127, "buffer level"},
    {130, "distributed object member"},
    {131, "attribute event"},
});
static_assert(std::ranges::is_sorted(kNames, {}, &ObjectName::type));

}  // namespace

std::string_view blfObjectName(std::uint32_t type) {
  const auto* const found = std::ranges::lower_bound(kNames, type, {}, &ObjectName::type);
  return found != kNames.end() && found->type == type ? found->name : "unknown object";
}

}  // namespace xlatr
