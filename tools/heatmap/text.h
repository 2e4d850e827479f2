// Numbers and places as messages show them.
#pragma once

#include "part/surface.h"

#include <string>

namespace heatmap {

// The shortest decimal form that reads back as the same number; "inf", "-inf" or "nan" besides.
std::string text(double value);

// What somebody has typed, in quotes, and cut short if it is long.
std::string quoted(const std::string& given);

// Cut to so many significant digits, at least: "31.4".
std::string shortText(double value, int digits = 4);

// An error with two significant digits, rounded up: "0.32".
std::string errorText(double error);

// "1 face", "2 faces": a noun whose plural ends in s.
std::string counted(std::int32_t count, const char* noun);

// "8 vertices, 12 triangles"
std::string counts(const Surface& surface);

// "(1, 2.5, -3)", a place of the surface in the coordinates of the file: with six digits, and with
// twelve far away from zero.
std::string placeText(const Surface& surface, quor::Vec3 point);

// "(0, 0, 0) to (50, 40, 26)", likewise.
std::string boundsText(const Surface& surface);

}  // namespace heatmap
