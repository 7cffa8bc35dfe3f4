#include "messages/fd_kind.hpp"

#include <gtest/gtest.h>

namespace xlatr {
namespace {

TEST(FdKind, hasTheBitsThatItWasMadeOf) {
  const struct {
    bool brs;
    bool esi;
    MessageKind kind;
  } cases[] = {{false, false, MessageKind::FD},
               {true, false, MessageKind::FB},
               {false, true, MessageKind::FE},
               {true, true, MessageKind::BI}};
  for (const auto& test : cases) {
    EXPECT_EQ(fdKind(test.brs, test.esi), test.kind);
    EXPECT_TRUE(isFd(test.kind)) << messageKindToText(test.kind);
    EXPECT_EQ(hasBrs(test.kind), test.brs) << messageKindToText(test.kind);
    EXPECT_EQ(hasEsi(test.kind), test.esi) << messageKindToText(test.kind);
  }
}

TEST(FdKind, otherKindsHaveNoneOfThem) {
  for (const MessageKind kind : {MessageKind::DT, MessageKind::RR, MessageKind::ST, MessageKind::EC, MessageKind::ER,
                                 MessageKind::EV, MessageKind::XL, MessageKind::Unknown}) {
    EXPECT_FALSE(isFd(kind)) << messageKindToText(kind);
    EXPECT_FALSE(hasBrs(kind)) << messageKindToText(kind);
    EXPECT_FALSE(hasEsi(kind)) << messageKindToText(kind);
  }
}

}  // namespace
}  // namespace xlatr
