// Numbers and places as messages show them.
#pragma once

#include "surface.h"

#include <string>

namespace heatmap {

// The shortest decimal form that reads back as the same number; "inf", "-inf" or "nan" besides.
std::string text(double value);

// What somebody has typed, in quotes, and cut short if it is long.
std::string quoted(const std::string& given);

// "(1, 2.5, -3)", with six digits.
std::string pointText(const double* point);

// "(0, 0, 0) to (50, 40, 26)", with six digits.
std::string boundsText(const Bounds& bounds);

}  // namespace heatmap
