// The functions of the kit that make something, with what they answer.
#pragma once

#include "kit_mesh.h"

#include <gtest/gtest.h>

namespace test {

inline KitMesh clean(const Mesh& mesh, QuorkitStatus expected = QUORKIT_DONE) {
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(quorkitClean(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), &made),
            expected);
  return KitMesh(made);
}

inline KitMesh refine(const Mesh& mesh, double longest, QuorkitStatus expected = QUORKIT_DONE) {
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(quorkitRefine(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), longest,
                          &made),
            expected);
  return KitMesh(made);
}

inline KitMesh refineTo(const Mesh& mesh, std::int32_t count,
                        QuorkitStatus expected = QUORKIT_DONE) {
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(quorkitRefineTo(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), count,
                            &made),
            expected);
  return KitMesh(made);
}

inline KitSolver construct(const Mesh& mesh, const std::vector<std::int32_t>& tags,
                           QuorkitStatus expected = QUORKIT_DONE) {
  QuorkitSolver* solver = nullptr;
  EXPECT_EQ(quorkitConstruct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                             tags.data(), nullptr, nullptr, &solver),
            expected);
  return KitSolver(solver);
}

}  // namespace test
