// The numbers on the command line.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace heatmap {

// The command line asks for something that cannot be.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Nothing, or what is wrong with a text where a finite number should be; in the second case one
// that is not negative either.
std::string whyNotFinite(const std::string& given);
std::string whyNotFiniteOr0(const std::string& given);

// What is prescribed at the hot and the cold vertices, and the ends of the colours, if they are
// given: whether there is something to colour. Throws UsageError.
void requireSense(double hot, double cold, const std::vector<double>& range);

}  // namespace heatmap
