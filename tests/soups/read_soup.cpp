#include "soups/soups.h"

#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <stdexcept>

namespace bench {

Soup readSoup(const std::string& file) {
  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile(file, 0);
  if (scene == nullptr) {
    throw std::runtime_error(importer.GetErrorString());
  }
  std::vector<double> all;
  for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
    const aiMesh& mesh = *scene->mMeshes[m];
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
      for (unsigned k = 0; mesh.mFaces[f].mNumIndices == 3 && k < 3; ++k) {
        const aiVector3D& p = mesh.mVertices[mesh.mFaces[f].mIndices[k]];
        all.insert(all.end(), {p.x, p.y, p.z});
      }
    }
  }
  return soupOfPoints(std::move(all));
}

}  // namespace bench
