// Meshes of the kit as surfaces of this program.
#pragma once

#include "part/change.h"
#include "part/surface.h"

#include <quorkit.hpp>

namespace heatmap {

// The mesh, whose coordinates are relative to the origin.
Surface copyOf(const quor::kit::Mesh& mesh, quor::Vec3 origin);

// What a mesh that the kit has refined says of its triangles and vertices.
Change changeOf(const quor::kit::Mesh& refined);

}  // namespace heatmap
