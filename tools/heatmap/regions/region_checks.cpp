#include "regions/region_checks.h"

#include "part/components.h"
#include "part/contact.h"
#include "part/geometry.h"
#include "text.h"

#include <quorkit.hpp>

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace heatmap {
namespace {

constexpr double kTouching = 1e-5;  // of the diagonal

// Calls (vertex, value) for everything that is prescribed, some vertices more than once.
template <typename Take>
void forEachPrescribed(const Regions& regions, const Take& take) {
  const Surface& surface = regions.surface();
  for (const Region& region : regions.all()) {
    for (const std::int32_t t : region.selection.triangles) {
      for (std::size_t k = 0; k < 3; ++k) {
        take(surface.triangle(t)[k], region.value);
      }
    }
    for (const Edge& edge : region.selection.edges) {
      take(edge[0], region.value);
      take(edge[1], region.value);
    }
  }
}

std::optional<Contact> contactOf(const Surface& surface,
                                 const std::vector<std::int32_t>& component) {
  return findContact(surface, component, kTouching * boundsOf(surface).diagonal());
}

}  // namespace

void requirePrescribedComponents(const Regions& regions) {
  const Surface& surface = regions.surface();
  std::vector<std::int32_t> tags(toSize(surface.vertexCount()), 0);
  forEachPrescribed(regions, [&](std::int32_t v, double /*value*/) { tags[toSize(v)] = 1; });
  const QuorkitFinding open =
      quor::kit::check(surface.vertices, surface.triangles, tags).unprescribedPieces;
  if (open.count == 0) {
    return;
  }
  const std::string what =
      (open.count == 1 ? "the connected component at "
                       : std::to_string(open.count) + " connected components, the first at ") +
      placeText(surface, surface.point(open.first)) + (open.count == 1 ? " has" : ", have") +
      " no prescribed value: ";
  const std::vector<std::int32_t> component = componentsOf(surface);
  const std::optional<Contact> contact = contactOf(surface, component);
  if (contact) {
    throw std::runtime_error(
        what + "components touch at " + placeText(surface, contact->place) +
        " without a common vertex, which a larger --tolerance does not change. Unite the solids in "
        "the CAD system, or prescribe a value on each (--hot face:X,Y,Z)");
  }
  throw std::runtime_error(
      what +
      "prescribe one there (--hot face:X,Y,Z), keep the largest component only "
      "(--largest), or close gaps with a larger --tolerance");
}

void checkDegenerate(const Surface& surface, bool isErrorEstimated, Stages& stages) {
  const QuorkitFinding left = quor::kit::check(surface.vertices, surface.triangles).flatTriangles;
  if (left.count == 0) {
    return;
  }
  const std::string what = "cleaning left " + counted(left.count, "degenerate triangle") +
                           ", the first at " + placeText(surface, centerOf(surface, left.first)) +
                           ", because dropping more would open a crack";
  constexpr const char* const kRemedy =
      "repair the part there, or weld it away with a larger --tolerance";
  if (isErrorEstimated) {
    throw std::runtime_error(what + ", and with them no error can be estimated: " + kRemedy +
                             "; --edge none solves without an estimate");
  }
  stages.warn(what + "; the field near them may be wrong: " + kRemedy);
}

void warnOfComponents(const Regions& regions, Stages& stages) {
  const Surface& surface = regions.surface();
  const std::vector<std::int32_t> component = componentsOf(surface);
  struct Values {
    double first;
    bool isOne;
  };
  std::map<std::int32_t, Values> values;
  forEachPrescribed(regions, [&](std::int32_t v, double value) {
    const auto [known, isNew] = values.emplace(component[toSize(v)], Values{value, true});
    known->second.isOne = known->second.isOne && known->second.first == value;
  });
  for (const auto& [root, value] : values) {
    if (value.isOne) {
      stages.warn("the connected component at " + placeText(surface, surface.point(root)) +
                  " has the single value " + text(value.first) +
                  ", so that its field is constant: prescribe a second one there");
    }
  }
  if (const std::optional<Contact> contact = contactOf(surface, component)) {
    stages.warn("connected components touch at " + placeText(surface, contact->place) +
                " without a common vertex, so that no heat passes: unite the solids in the CAD "
                "system if it should; a larger --tolerance does not help");
  }
}

}  // namespace heatmap
