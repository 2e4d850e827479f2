// What wobj writes, read back by a reader that others wrote.

#include "support/handle.h"

#include <assimp/material.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <filesystem>

using namespace test;
namespace fs = std::filesystem;

namespace {

/// Goes to a new directory and, at the end, back and removes it.
class NewDirectory {
 public:
  explicit NewDirectory(const char* name)
      : before_(fs::current_path()), there_(fs::temp_directory_path() / name) {
    fs::create_directories(there_);
    fs::current_path(there_);
  }
  ~NewDirectory() {
    fs::current_path(before_);
    fs::remove_all(there_);
  }
  NewDirectory(const NewDirectory&) = delete;
  NewDirectory& operator=(const NewDirectory&) = delete;

 private:
  fs::path before_;
  fs::path there_;
};

std::vector<double> toSolverOrder(const std::vector<double>& field,
                                  const std::vector<std::int32_t>& tags) {
  std::vector<double> ordered;
  std::vector<double> free;
  for (std::size_t i = 0; i < field.size(); ++i) {
    (isPrescribed(tags[i]) ? ordered : free).push_back(field[i]);
  }
  ordered.insert(ordered.end(), free.rbegin(), free.rend());
  return ordered;
}

TEST(ObjReader, FindsMeshMaterialRampAndField) {
  const int nx = 20;
  const int ny = 15;
  const Mesh mesh = bumpyMesh(nx, ny, 7);
  const std::vector<std::int32_t> tags = tagEnds(nx, ny);
  std::vector<double> field(tags.size());
  std::transform(tags.begin(), tags.end(), field.begin(),
                 [](std::int32_t tag) { return tag == 1 ? 80.0 : 20.0; });
  const Handle handle = build(mesh, tags);
  field = solve(handle, field);
  const NewDirectory there("quor-obj-reader");
  wobj(handle.get(), toSolverOrder(field, tags).data(), "part");

  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile("part.obj", 0);
  ASSERT_NE(scene, nullptr) << importer.GetErrorString();
  ASSERT_EQ(scene->mNumMeshes, 1U);
  const aiMesh& read = *scene->mMeshes[0];
  const aiMaterial& material = *scene->mMaterials[read.mMaterialIndex];
  aiString ramp;
  EXPECT_STREQ(material.GetName().C_Str(), "Heat");
  ASSERT_EQ(material.GetTexture(aiTextureType_DIFFUSE, 0, &ramp), aiReturn_SUCCESS);
  EXPECT_STREQ(ramp.C_Str(), "viridis.PNG");

  ASSERT_EQ(read.mNumFaces, unsigned(mesh.m()));
  ASSERT_TRUE(read.HasTextureCoords(0));
  for (std::size_t corner = 0; corner < mesh.triangles.size(); ++corner) {
    const unsigned index = read.mFaces[corner / 3].mIndices[corner % 3];
    const auto vertex = std::size_t(mesh.triangles[corner]);
    const aiVector3D& p = read.mVertices[index];
    for (unsigned axis = 0; axis < 3; ++axis) {
      ASSERT_NEAR(p[axis], mesh.vertices[3 * vertex + axis], 1e-5);
    }
    ASSERT_NEAR(read.mTextureCoords[0][index].x, (80 - field[vertex]) / 60, 1e-5);
  }
}

}  // namespace
