// Vectors of doubles, and how wide they may be on this machine.
#pragma once

#include "util/machine.h"

#include <cstddef>
#include <cstring>

#if defined(QUOR_GNU_EXTENSIONS) && defined(__x86_64__) && !defined(_WIN32)
// Windows aligns no stack to the 32 bytes of the wider vectors.
#define QUOR_WIDE_VECTORS 1
#endif

namespace quor {

/// How many numbers one instruction computes with. Results do not depend on it, to the bit: every
/// number goes through the same sequence of rounded operations.
enum class VectorWidth { two, four, eight };

/// The widest that this machine has.
VectorWidth widestVectors();

// A function that works with vectors is a template over one of these, and always inlined: it is
// then compiled for the instructions of the function that it ends up in. Vectors are passed by
// reference: by value they would be passed differently with and without these instructions.
#if defined(QUOR_GNU_EXTENSIONS)
struct Vectors2 {
  using Type = double __attribute__((vector_size(2 * sizeof(double))));
  static constexpr int kTileColumns = 4;  ///< of the dense kernel, by the number of registers
  static QUOR_ALWAYS_INLINE void gather(Type& vector, const double* x, const int* places) {
    vector = Type{x[places[0]], x[places[1]]};
  }
  static QUOR_ALWAYS_INLINE void scatter(const Type& vector, double* x, const int* places) {
    x[places[0]] = vector[0];
    x[places[1]] = vector[1];
  }
};
struct Vectors4 {
  using Type = double __attribute__((vector_size(4 * sizeof(double))));
  static constexpr int kTileColumns = 4;
};
struct Vectors8 {
  using Type = double __attribute__((vector_size(8 * sizeof(double))));
  static constexpr int kTileColumns = 8;
};
#else
struct Vectors2 {  // other compilers see to it themselves
  using Type = double;
  static constexpr int kTileColumns = 4;
  static void gather(double& number, const double* x, const int* places) { number = x[places[0]]; }
  static void scatter(double number, double* x, const int* places) { x[places[0]] = number; }
};
#endif

/// Reads and writes a vector anywhere in memory.
template <typename Vector>
QUOR_ALWAYS_INLINE void load(Vector& vector, const double* from) {
  std::memcpy(&vector, from, sizeof vector);
}
template <typename Vector>
QUOR_ALWAYS_INLINE void store(double* to, const Vector& vector) {
  std::memcpy(to, &vector, sizeof vector);
}

}  // namespace quor
