#include "legend.h"

#include "whole_file.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace heatmap {

void writeLegend(const Legend& legend, const std::filesystem::path& file) {
  using Json = nlohmann::ordered_json;
  const Json json = {{"quor", 1},
                     {"title", legend.title},
                     {"unit", legend.unit},
                     {"minimum", legend.minimum},
                     {"maximum", legend.maximum},
                     {"field", legend.field}};
  writeWhole(file, [&json](std::ostream& stream) {
    stream << json.dump(1, ' ', false, Json::error_handler_t::replace) << '\n';
  });
}

}  // namespace heatmap
