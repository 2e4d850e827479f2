#include "results/legend.h"

#include "results/files.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>

namespace heatmap {
namespace {

using Json = nlohmann::ordered_json;

// A whole number without a point: 20 instead of 20.0.
Json number(double value) {
  constexpr double kExact = 9007199254740992.0;
  const bool isWhole = value == std::floor(value) && std::fabs(value) <= kExact;
  return isWhole ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

}  // namespace

void writeLegend(const Legend& legend, const std::filesystem::path& file) {
  Json json = {{"quor", 1},
               {"title", legend.title},
               {"unit", legend.unit},
               {"minimum", number(legend.minimum)},
               {"maximum", number(legend.maximum)},
               {"field", legend.field}};
  if (legend.error) {
    json["error"] = number(*legend.error);
  }
  if (!legend.errorExcept.empty()) {
    json["errorExcept"] = legend.errorExcept;
  }
  const auto& [x, y, z] = legend.origin;
  if (x != 0.0 || y != 0.0 || z != 0.0) {
    json["origin"] = {number(x), number(y), number(z)};
  }
  writeWhole(file, json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace heatmap
