// Other programs, and threads as hosts have them.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cstdio>
#include <functional>
#include <string>

namespace test {

/// @return what the command prints, or "failed"
inline std::string run(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  std::array<char, 256> buffer{};
  while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) {
    output += buffer.data();
  }
  return pclose(pipe) == 0 ? output : "failed";
}

/// Runs work on a stack of 128 KB.
inline void runOnSmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{128} * 1024), 0);
  pthread_t thread{};
  const auto run = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace test
