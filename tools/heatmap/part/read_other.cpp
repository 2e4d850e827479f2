#include "part/read_other.h"

#ifdef HEATMAP_ASSIMP
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <limits>
#endif

#include <stdexcept>
#include <string>

namespace heatmap {

#ifdef HEATMAP_ASSIMP

namespace {

void append(const aiMesh& part, Surface& surface) {
  for (unsigned f = 0; f < part.mNumFaces; ++f) {
    const aiFace& face = part.mFaces[f];
    for (unsigned k = 0; k < 3 && face.mNumIndices == 3; ++k) {
      const aiVector3D& p = part.mVertices[face.mIndices[k]];
      surface.triangles.push_back(surface.vertexCount());
      surface.vertices.insert(surface.vertices.end(), {p.x, p.y, p.z});
    }
  }
}

}  // namespace

PartFile readOther(const std::filesystem::path& file) {
  Assimp::Importer importer;
  importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE,
                              aiPrimitiveType_POINT | aiPrimitiveType_LINE);
  // Validated first: the steps after it rely on what a damaged file does not keep.
  const aiScene* const scene =
      importer.ReadFile(file.string(), aiProcess_ValidateDataStructure | aiProcess_Triangulate |
                                           aiProcess_SortByPType | aiProcess_PreTransformVertices);
  if (scene == nullptr) {
    throw std::runtime_error(
        "it is damaged, or of a format that is not read: export STL, OBJ, PLY or OFF. assimp "
        "says: " +
        std::string(importer.GetErrorString()));
  }
  PartFile part;
  part.isSinglePrecision = true;
  for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
    append(*scene->mMeshes[m], part.surface);
  }
  if (part.surface.triangles.size() > std::numeric_limits<std::int32_t>::max()) {
    throw std::runtime_error("it holds more than 715 million triangles");
  }
  return part;
}

#else

PartFile readOther(const std::filesystem::path& file) {
  throw std::runtime_error("the ending \"" + file.extension().u8string() +
                           "\" is none of .stl, .obj, .ply and .off: export one of these");
}

#endif

}  // namespace heatmap
