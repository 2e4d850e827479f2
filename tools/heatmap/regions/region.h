// What rules select of a surface, and the value that is prescribed there.
#pragma once

#include "part/change.h"
#include "part/surface.h"
#include "regions/faces.h"
#include "regions/rule.h"
#include "stages.h"

#include <string>
#include <vector>

namespace heatmap {

struct Region {
  Rule rule;
  double value;
  Selection selection;
  std::string what;  // for people: "12 triangles, area 31.4"
};

// A part whose regions are being selected. Borders of bodies are cut into the surface; all other
// rules look at the part as it was read, so the order of the rules does not matter.
class Regions {
 public:
  // Takes a welded and cleaned part, and its faces, which must outlive this.
  Regions(Surface part, const Faces& faces);

  // Selects what the rule says, and warns if that could be something else. Throws
  // std::runtime_error, which names the rule, if that is nothing, or vertices alone, which have no
  // capacity.
  void add(const Rule& rule, double value, Stages& stages);

  // Selects the end of an axis that is farther from what is selected so far: of the axis that the
  // first rule names, or else of the longest one whose end does not touch it, if there is one.
  // Before any rule, the low end of the longest axis.
  void addMissingEnd(double value, Stages& stages);

  // Drops what cutting has left of almost no area. To be called after all rules are added.
  void finish();

  const std::vector<Region>& all() const { return regions_; }
  // The part with the borders in it, to which the selections refer.
  const Surface& surface() const { return surface_; }

 private:
  Selection select(const Rule& rule, Region& region, Stages& stages) const;
  void takeNearest(const Rule& rule, const char* kind, const Faces::Nearest& nearest,
                   Region& region, Stages& stages) const;
  Rule endOpposite(std::size_t axis) const;
  Selection faceOf(std::int32_t face, Region& region) const;

  Surface part_;
  const Faces& faces_;
  Surface surface_;
  Change change_;  // from one to the other
  std::vector<Region> regions_;
};

// Throws std::runtime_error, which names both rules and a place, if regions of different values
// overlap. Those that only touch are not refused.
void requireNoOverlap(const Surface& surface, const std::vector<Region>& regions);

}  // namespace heatmap
