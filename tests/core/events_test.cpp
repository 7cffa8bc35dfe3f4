#include "core/events.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace xlatr {
namespace {

TEST(EventGroup, keepsAnEventUntilItIsSeenAndResetsIt) {
  EventGroup events;
  const auto first = events.create();
  const auto second = events.create();
  events.signal(second);
  events.signal(second);
  EXPECT_EQ(events.waitAny(), second);
  events.signal(first);
  EXPECT_EQ(events.waitAny(), first);
}

TEST(EventGroup, returnsTheLowestOfSeveral) {
  EventGroup events;
  const auto first = events.create();
  const auto second = events.create();
  const auto third = events.create();
  events.signal(third);
  events.signal(second);
  events.signal(first);
  EXPECT_EQ(events.waitAny(), first);
  EXPECT_EQ(events.waitAny(), second);
  EXPECT_EQ(events.waitAny(), third);
}

TEST(EventGroup, wakesAWaitingThread) {
  EventGroup events;
  const auto event = events.create();
  EventGroup::Event seen = 99;
  std::thread waiting([&] { seen = events.waitAny(); });
  events.signal(event);
  waiting.join();
  EXPECT_EQ(seen, event);
}

TEST(EventGroup, losesNoEventOfManyThreads) {
  EventGroup events;
  std::vector<EventGroup::Event> created(200);
  for (auto& event : created) {
    event = events.create();
  }
  std::vector<std::thread> threads;
  for (std::size_t part = 0; part < 4; ++part) {
    threads.emplace_back([&, part] {
      for (std::size_t index = part; index < created.size(); index += 4) {
        events.signal(created[index]);
      }
    });
  }
  std::vector<int> seen(created.size());
  for (std::size_t count = 0; count < created.size(); ++count) {
    ++seen[events.waitAny()];
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(seen, std::vector<int>(created.size(), 1));
}

}  // namespace
}  // namespace xlatr
