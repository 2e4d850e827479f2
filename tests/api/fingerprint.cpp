// Fingerprints of all outputs for a fixed set of inputs: the same with every compiler, with and
// without optimization, and on every processor. Whoever changes the arithmetic on purpose changes
// the numbers expected here.

#include "operator/stiffness_assembly.h"
#include "support/handle.h"
#include "support/temp_directory.h"
#include "support/weld_oracle.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <type_traits>

using namespace test;

namespace {

/// An unsigned integer of so many bytes.
template <std::size_t kBytes>
using Bits = std::conditional_t<kBytes == 1, std::uint8_t,
                                std::conditional_t<kBytes == 4, std::uint32_t, std::uint64_t>>;

/// FNV-1a, 64 bits.
class Hash {
 public:
  template <typename Value>
  void add(const Value* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      Bits<sizeof(Value)> bits;
      std::memcpy(&bits, &values[i], sizeof bits);
      for (std::size_t byte = 0; byte < sizeof bits; ++byte) {  // the lowest first everywhere
        value_ = (value_ ^ (std::uint64_t{bits} >> 8 * byte & 0xFFU)) * 0x100000001B3U;
      }
    }
  }
  template <typename Container>
  void add(const Container& values) {
    add(values.data(), values.size());
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325U;
};

/// Numbers in [0, 1) made of integers: no function of the C library takes part.
class Numbers {
 public:
  double next() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return std::ldexp(double(state_ >> 33U), -31);
  }

 private:
  std::uint64_t state_ = 1;
};

Mesh wavyMesh(int side) {
  Numbers numbers;
  return gridMesh(side, side, [&](double u, double v) {
    return std::array<double, 3>{u + 0.2 * numbers.next() / side, v + 0.2 * numbers.next() / side,
                                 u * (1 - u) * (v - 0.3) * (1 + numbers.next() / side)};
  });
}

std::uint64_t weldFingerprint() {
  Hash hash;
  Numbers numbers;
  std::vector<Mesh> soups{soupOf(wavyMesh(40)), wavyMesh(60), {}};
  for (int i = 0; i < 3 * 4000; ++i) {
    soups.back().vertices.push_back(numbers.next());
  }
  for (const Mesh& soup : soups) {
    for (const double tolerance : {0.0, 1e-9, 0.004, 0.01, 0.03, 0.06, 0.5, kInfinity}) {
      const Welded weld = welded(soup, tolerance);
      hash.add(weld.vertices);
      hash.add(weld.triangles);
      hash.add(weld.map);
    }
  }
  return hash.value();
}

std::uint64_t stiffnessFingerprint(const Mesh& mesh) {
  const quor::SparseMatrix K =
      *quor::assembleStiffness(mesh.n(), 0, mesh.vertices, mesh.triangles).FF;
  Hash hash;
  hash.add(K.valuePtr(), std::size_t(K.nonZeros()));
  hash.add(K.innerIndexPtr(), std::size_t(K.nonZeros()));
  return hash.value();
}

/// Fields with and without a source.
std::uint64_t fieldFingerprint(const Mesh& mesh, const Handle& handle) {
  std::vector<double> values = mesh.vertices;
  values.resize(std::size_t(mesh.n()));
  Hash hash;
  hash.add(solve(handle, values));
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), values.data(), mesh.vertices.data(), values.data(), &status);
  hash.add(values);
  return hash.value();
}

std::uint64_t sphereFingerprint() {
  Hash hash;
  Numbers numbers;
  for (std::int32_t value = -1; value <= 65534; ++value) {
    std::array<float, 3> p{};
    auto& [x, y, z] = p;
    encode_integer_to_sphere(value, &x, &y, &z);
    hash.add(p);
    const float far = std::ldexp(float(numbers.next()) - 0.5F, value % 70);
    const std::int32_t decoded = decode_integer_from_sphere(far, p[1], -p[2]);
    hash.add(&decoded, 1);
  }
  return hash.value();
}

std::uint64_t fileFingerprint(const Mesh& mesh, const Handle& handle) {
  const TempDirectory directory;
  const std::string base = directory / "f";
  wobj(handle.get(), mesh.vertices.data(), base.c_str());
  const std::string text = readFile(base + ".obj");
  Hash hash;
  hash.add(text.substr(text.find('\n')));  // the first line names the directory
  hash.add(readFile(base + ".mtl"));
  return hash.value();
}

bool isSame(const char* what, std::uint64_t actual, std::uint64_t expected) {
  std::printf("%-10s %016" PRIX64 "%s\n", what, actual, actual == expected ? "" : "  unexpected");
  return actual == expected;
}

}  // namespace

int main() {
  const Mesh mesh = wavyMesh(90);  // its factor is computed in blocks
  const Handle handle = build(mesh, tagEnds(90, 90));
  const Mesh small = wavyMesh(50);  // its factor, and its field, are Eigen's
  const Handle smallHandle = build(small, tagEnds(50, 50));

  bool isAllSame = isSame("weld", weldFingerprint(), 0x468E57C16E2CB784);
  isAllSame &= isSame("stiffness", stiffnessFingerprint(mesh), 0x5C716167CB8BFF6A);
  isAllSame &= isSame("field", fieldFingerprint(mesh, handle), 0x7AB7E776AC9AA616);
  isAllSame &= isSame("small", fieldFingerprint(small, smallHandle), 0xA5920A90077CC98A);
  isAllSame &= isSame("sphere", sphereFingerprint(), 0x31E1CAE009121118);
  isAllSame &= isSame("files", fileFingerprint(mesh, handle), 0x198208F8EF754CB8);
  return isAllSame ? 0 : 1;
}
