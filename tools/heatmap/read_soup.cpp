#include "read_soup.h"

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <quorkit.hpp>

#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>

namespace heatmap {
namespace {

void append(const aiMesh& part, Surface& soup) {
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

void requireFile(const std::filesystem::path& file) {
  std::error_code ignored;
  if (!std::filesystem::exists(file, ignored)) {
    throw std::runtime_error("cannot read " + file.string() + ": there is no such file");
  }
  if (!std::filesystem::is_regular_file(file, ignored)) {
    throw std::runtime_error("cannot read " + file.string() + ": that is not a file");
  }
  if (!std::ifstream(file)) {
    throw std::runtime_error("cannot read " + file.string() + ": it is not yours to read");
  }
}

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reader) {
  throw std::runtime_error(
      "cannot read " + file.string() +
      " as a mesh of triangles: it has none, is damaged, or is of another format. Export STL (or "
      "OBJ, PLY) anew; STEP and IGES hold curved faces, not triangles. The reader says: " +
      reader);
}

void requireFinite(const Surface& soup, const std::filesystem::path& file) {
  const QuorkitFinding notFinite =
      quor::kit::check(soup.vertices, soup.triangles).notFinite;  // every third one ends a triangle
  if (notFinite.count > 0) {
    throw std::runtime_error("triangle " + std::to_string(notFinite.first / 3 + 1) + " of " +
                             file.string() +
                             " has a coordinate that is not a finite number: export the part anew");
  }
}

}  // namespace

Surface readSoup(const std::filesystem::path& file) {
  requireFile(file);
  Assimp::Importer importer;
  importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE,
                              aiPrimitiveType_POINT | aiPrimitiveType_LINE);
  // Validated first: the steps after it rely on what a damaged file does not keep.
  const aiScene* scene =
      importer.ReadFile(file.string(), aiProcess_ValidateDataStructure | aiProcess_Triangulate |
                                           aiProcess_SortByPType | aiProcess_PreTransformVertices);
  if (scene == nullptr) {
    refuse(file, importer.GetErrorString());
  }
  Surface soup;
  for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
    append(*scene->mMeshes[m], soup);
  }
  if (soup.triangles.empty()) {
    refuse(file, "no triangle");
  }
  if (soup.triangles.size() > std::numeric_limits<std::int32_t>::max()) {
    throw std::runtime_error(file.string() + " holds more than 715 million triangles");
  }
  requireFinite(soup, file);
  return soup;
}

}  // namespace heatmap
