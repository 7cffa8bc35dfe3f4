// A system that starts no threads.
#pragma once

#include <gtest/gtest.h>

#include <pthread.h>

#include <cstddef>

namespace xlatr::test {

// While it lives, a new thread gets a stack that there is no room for.
class NoThreads {
 public:
  NoThreads() {
    ::pthread_getattr_default_np(&former_);
    pthread_attr_t huge;
    ::pthread_attr_init(&huge);
    ::pthread_attr_setstacksize(&huge, std::size_t{1} << 46U);
    EXPECT_EQ(::pthread_setattr_default_np(&huge), 0);
    ::pthread_attr_destroy(&huge);
  }
  ~NoThreads() {
    ::pthread_setattr_default_np(&former_);
    ::pthread_attr_destroy(&former_);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t former_{};
};

}  // namespace xlatr::test
