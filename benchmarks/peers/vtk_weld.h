// VTK's static point cleaner as a peer.
#pragma once

#include "soups/soups.h"

#include <vtkPolyData.h>
#include <vtkSmartPointer.h>

namespace bench {

/// The soup as VTK wants it; not part of what is measured.
vtkSmartPointer<vtkPolyData> vtkSoup(const Soup& soup);

/// Runs vtkStaticCleanPolyData with an absolute tolerance. Returns the number of points left.
std::int64_t vtkWeld(vtkPolyData* soup, double tolerance);

}  // namespace bench
