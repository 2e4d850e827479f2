#include "within/field.h"

#include <quorkit.hpp>

#include <vtkCellArray.h>
#include <vtkDoubleArray.h>
#include <vtkGenericCell.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkStaticCellLocator.h>

#include <algorithm>
#include <cmath>

namespace within {
namespace {

/// A field at any point of its surface.
class Evaluation {
 public:
  explicit Evaluation(const Field& field) : field_(field) {
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    for (std::size_t v = 0; v < field.values.size(); ++v) {
      points->InsertNextPoint(field.mesh.point(v).data());
    }
    vtkNew<vtkCellArray> cells;
    for (std::size_t t = 0; t < field.mesh.triangles.size(); t += 3) {
      const vtkIdType corners[] = {field.mesh.triangles[t], field.mesh.triangles[t + 1],
                                   field.mesh.triangles[t + 2]};
      cells->InsertNextCell(3, corners);
    }
    surface_->SetPoints(points);
    surface_->SetPolys(cells);
    locator_->SetDataSet(surface_);
    locator_->BuildLocator();
  }

  double at(const Point& p) {
    Point closest{};
    vtkIdType cell = 0;
    int part = 0;
    double squared = 0.0;
    locator_->FindClosestPoint(p.data(), closest.data(), cell_, cell, part, squared);
    double weights[3];
    double parameters[3];
    surface_->GetCell(cell, cell_);
    cell_->EvaluatePosition(closest.data(), nullptr, part, parameters, squared, weights);
    double value = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      const auto corner = static_cast<std::size_t>(cell) * 3 + k;
      value += std::clamp(weights[k], 0.0, 1.0) *
               field_.values[static_cast<std::size_t>(field_.mesh.triangles[corner])];
    }
    return value;
  }

 private:
  const Field& field_;
  vtkNew<vtkPolyData> surface_;
  vtkNew<vtkStaticCellLocator> locator_;
  vtkNew<vtkGenericCell> cell_;
};

Point mean(std::initializer_list<Point> points) {
  Point sum{};
  for (const Point& p : points) {
    for (std::size_t k = 0; k < 3; ++k) {
      sum[k] += p[k] / static_cast<double>(points.size());
    }
  }
  return sum;
}

}  // namespace

bool Exempt::contains(const Point& p) const {
  return std::any_of(centers.begin(), centers.end(), [&](const Point& c) {
    return std::hypot(p[0] - c[0], p[1] - c[1], p[2] - c[2]) < radius;
  });
}

double spanOf(const Field& field) {
  const auto [low, high] = std::minmax_element(field.values.begin(), field.values.end());
  return *high - *low;
}

Difference compare(const Field& field, const Field& reference, const Exempt& exempt) {
  Evaluation at(field);
  Evaluation exact(reference);
  Difference difference;
  const auto note = [&](const Point& p, double error) {
    if (error > difference.largest && !exempt.contains(p)) {
      difference.largest = error;
      difference.where = p;
    }
  };
  const std::vector<double> areas =
      quor::kit::areas(reference.mesh.vertices, reference.mesh.triangles);
  double area = 0.0;
  for (std::size_t v = 0; v < reference.values.size(); ++v) {
    const Point p = reference.mesh.point(v);
    const double error = std::abs(at.at(p) - reference.values[v]);
    note(p, error);
    difference.average += error * areas[v];
    area += areas[v];
  }
  difference.average /= area;
  for (std::size_t v = 0; v < field.values.size(); ++v) {
    const Point p = field.mesh.point(v);
    note(p, std::abs(field.values[v] - exact.at(p)));
  }
  for (std::size_t k = 0; k < field.mesh.triangles.size(); ++k) {
    const std::size_t first = k / 3 * 3;
    const auto value = [&](std::size_t corner) {
      return field.values[static_cast<std::size_t>(field.mesh.triangles[corner])];
    };
    const std::size_t next = first + (k + 1) % 3;
    const Point middle = mean({field.mesh.corner(k), field.mesh.corner(next)});
    note(middle, std::abs((value(k) + value(next)) / 2.0 - exact.at(middle)));
    if (k == first) {
      const Point center =
          mean({field.mesh.corner(k), field.mesh.corner(k + 1), field.mesh.corner(k + 2)});
      note(center, std::abs((value(k) + value(k + 1) + value(k + 2)) / 3.0 - exact.at(center)));
    }
  }
  return difference;
}

Field errorMap(const Field& field, const Field& reference, const Exempt& exempt) {
  Evaluation exact(reference);
  Field map = field;
  for (std::size_t v = 0; v < map.values.size(); ++v) {
    const Point p = field.mesh.point(v);
    map.values[v] = exempt.contains(p) ? 0.0 : std::abs(field.values[v] - exact.at(p));
  }
  return map;
}

}  // namespace within
