#include "vtk_weld.h"

#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkStaticCleanPolyData.h>

#include <algorithm>
#include <array>

namespace bench {

vtkSmartPointer<vtkPolyData> vtkSoup(const Soup& soup) {
  vtkNew<vtkPoints> points;
  points->SetDataTypeToDouble();
  points->SetNumberOfPoints(soup.pointCount());
  std::copy(soup.points.begin(), soup.points.end(),
            static_cast<double*>(points->GetVoidPointer(0)));
  vtkNew<vtkCellArray> cells;
  cells->AllocateExact(soup.triangleCount(), static_cast<vtkIdType>(soup.triangles.size()));
  for (std::size_t t = 0; t < soup.triangles.size(); t += 3) {
    const std::array<vtkIdType, 3> corners{soup.triangles[t], soup.triangles[t + 1],
                                           soup.triangles[t + 2]};
    cells->InsertNextCell(3, corners.data());
  }
  auto data = vtkSmartPointer<vtkPolyData>::New();
  data->SetPoints(points);
  data->SetPolys(cells);
  return data;
}

std::int64_t vtkWeld(vtkPolyData* soup, double tolerance) {
  vtkNew<vtkStaticCleanPolyData> cleaner;
  cleaner->SetInputData(soup);
  cleaner->ToleranceIsAbsoluteOn();
  cleaner->SetAbsoluteTolerance(tolerance);
  cleaner->Update();
  return cleaner->GetOutput()->GetNumberOfPoints();
}

}  // namespace bench
