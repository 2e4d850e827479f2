// A field as colours.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorkit {

/// Looks every value up in the ramp's table. See quorkitColours.
/// @param low,high  finite; the values of the first and of the last colour
/// @param rgbaOut   receives four bytes per value
void colours(std::size_t n, const double* field, double low, double high, std::uint8_t* rgbaOut);

}  // namespace quorkit
