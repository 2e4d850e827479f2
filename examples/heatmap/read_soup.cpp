#include "read_soup.h"

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <limits>
#include <stdexcept>
#include <string>

namespace heatmap {
namespace {

void append(const aiMesh& part, Mesh& soup) {
  for (unsigned f = 0; f < part.mNumFaces; ++f) {
    const aiFace& face = part.mFaces[f];
    if (face.mNumIndices != 3) {
      continue;
    }
    for (unsigned corner = 0; corner < 3; ++corner) {
      const aiVector3D& p = part.mVertices[face.mIndices[corner]];
      soup.triangles.push_back(soup.vertexCount());
      soup.vertices.insert(soup.vertices.end(), {p.x, p.y, p.z});
    }
  }
}

}  // namespace

Mesh readSoup(const std::filesystem::path& file) {
  Assimp::Importer importer;
  importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE,
                              aiPrimitiveType_POINT | aiPrimitiveType_LINE);
  const aiScene* scene =
      importer.ReadFile(file.string(), aiProcess_Triangulate | aiProcess_SortByPType |
                                           aiProcess_PreTransformVertices);
  if (scene == nullptr) {
    throw std::runtime_error("cannot read " + file.string() + ": " + importer.GetErrorString());
  }
  Mesh soup;
  for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
    append(*scene->mMeshes[m], soup);
  }
  if (soup.triangles.empty()) {
    throw std::runtime_error(file.string() + " holds no triangle");
  }
  if (soup.triangles.size() > std::numeric_limits<std::int32_t>::max()) {
    throw std::runtime_error(file.string() + " holds more than 715 million triangles");
  }
  return soup;
}

}  // namespace heatmap
