// A solver handle that frees itself, and solves that check their status.
#pragma once

#include "mesh.h"

#include <gtest/gtest.h>
#include <quor.h>

#include <memory>
#include <vector>

namespace test {

struct Free {
  void operator()(void* handle) const { quorfree(handle); }
};
using Handle = std::unique_ptr<void, Free>;

inline Handle build(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  StatusCode status = 99;
  void* handle = nullptr;
  quorctorTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(),
                 nullptr, &status, &handle);
  EXPECT_EQ(status, 0U);
  return Handle(handle);
}

inline std::vector<double> solve(const Handle& handle, const std::vector<double>& prescribed) {
  std::vector<double> field(prescribed.size(), kNaN);
  StatusCode status = 99;
  quorsolveTagged(handle.get(), prescribed.data(), field.data(), &status);
  EXPECT_EQ(status, 0U);
  return field;
}

}  // namespace test
