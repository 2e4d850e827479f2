// The one place where text becomes a number.
#pragma once

#include <optional>
#include <string_view>

namespace heatmap {

// The number that the whole text is, in decimal, rounded to the nearest double, whatever the
// locale; perhaps infinite or NaN ("1e999", "nan"). Nothing if the text is none, or has more around
// it: no blank, no unit.
std::optional<double> parseNumber(std::string_view text);

// Likewise, and finite.
std::optional<double> parseFinite(std::string_view text);

}  // namespace heatmap
