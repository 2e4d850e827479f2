// Construction and solve beside plain Eigen and CHOLMOD, on one core. Prints Markdown tables.

#include "api/solver_handle.h"
#include "hard_meshes.h"
#include "memory_meter.h"
#include "operator/factor/analysis.h"
#include "operator/factor/minimum_degree.h"
#include "operator/factor/multifrontal.h"
#include "operator/mesh_check.h"
#include "operator/stiffness_assembly.h"
#include "operator/vertex_partition.h"
#include "peers/cholmod_solver.h"
#include "peers/plain_solver.h"
#include "side_by_side.h"
#include "solve/fields_solve.h"
#include "soups/tagged_mesh.h"

#include <quor.h>

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace {

using namespace bench;

struct Handle {
  void* pointer = nullptr;
  void construct(const TaggedMesh& mesh) {
    StatusCode status = 0;
    quorctorTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                   mesh.tags.data(), nullptr, &status, &pointer);
    if (status != QUOR_SUCCESS || quorinfo(pointer) != QUOR_INFO_SUCCESS) {
      throw std::runtime_error("construction failed");
    }
  }
  void clear() {
    quorfree(pointer);
    pointer = nullptr;
  }
  const quor::SolverHandle& operator*() const {
    return *static_cast<const quor::SolverHandle*>(pointer);
  }
};

/// What a plain program keeps.
struct Plain {
  PlainAssembly assembly;
  PlainFactor factor;
  explicit Plain(const TaggedMesh& mesh) : assembly(plainAssemble(mesh)) {
    factor.compute(*assembly.stiffnessFF);
  }
};

struct Cholmod {
  PlainAssembly assembly;
  CholmodSolver solver;
  explicit Cholmod(const TaggedMesh& mesh) : assembly(plainAssemble(mesh)) {
    solver.analyze(*assembly.stiffnessFF);
    solver.factorize(*assembly.stiffnessFF);
  }
};

void printTotals(const std::vector<TaggedMesh>& meshes, int rounds) {
  std::printf(
      "\n### Construction\n\nSeconds from mesh and tags to the factorized solver; in brackets how "
      "many times quorctorTagged's. CHOLMOD is given the plain method's assembly.\n\n"
      "| Mesh | Vertices | quorctorTagged | plain Eigen | CHOLMOD |\n|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    Handle ours;
    std::unique_ptr<Plain> plain;
    std::unique_ptr<Cholmod> cholmod;
    const int repeats = std::max(1, 40000 / mesh.n());
    const auto times = [repeats](const std::function<void()>& job) {
      return [repeats, job] {
        for (int i = 0; i < repeats; ++i) {
          job();
        }
      };
    };
    const std::vector<double> t =
        sideBySide(rounds,
                   {times([&] {
                      ours.clear();
                      ours.construct(mesh);
                    }),
                    times([&] { plain = std::make_unique<Plain>(mesh); }),
                    times([&] { cholmod = std::make_unique<Cholmod>(mesh); })},
                   [&] {
                     ours.clear();
                     plain.reset();
                     cholmod.reset();
                   });
    std::printf("| %s | %d | %.4f | %.4f (%.2fx) | %.4f (%.2fx) |\n", mesh.name.c_str(), mesh.n(),
                t[0] / repeats, t[1] / repeats, t[1] / t[0], t[2] / repeats, t[2] / t[0]);
    std::fflush(stdout);
  }
}

/// All that the library's construction does besides the factorization.
PlainAssembly ourAssembly(const TaggedMesh& mesh) {
  quor::VertexPartition partition = quor::partitionVertices(mesh.n(), mesh.tags.data());
  PlainAssembly a;
  a.prescribed = static_cast<std::int32_t>(partition.prescribedCount);
  a.vertices = std::make_shared<const std::vector<double>>(
      quor::reorderCoordinates(mesh.vertices.data(), partition.callerToSolver));
  a.triangles = std::make_shared<const std::vector<std::int32_t>>(
      quor::reorderTriangles(mesh.m(), mesh.triangles.data(), partition.callerToSolver));
  a.tags = mesh.tags;
  if (quor::checkMesh(mesh.n(), *a.triangles) != quor::MeshFault::none) {
    throw std::runtime_error("the mesh is rejected");
  }
  const quor::StiffnessBlocks blocks =
      quor::assembleStiffness(mesh.n(), a.prescribed, *a.vertices, *a.triangles);
  a.stiffnessFF = blocks.FF;
  a.stiffnessFP = blocks.FP;
  a.callerToSolver = std::move(partition.callerToSolver);
  a.solverToCaller = std::move(partition.solverToCaller);
  return a;
}

/// The steps of the library's factorization, of a matrix that is large enough for fronts.
class OurSteps {
 public:
  void order(const Matrix& matrix) {
    order_ = quor::orderByMinimumDegree(matrix, inverse_);
    permute(matrix);
  }
  void analyze() {
    analysis_ = quor::analyze(*permuted_);
    const Eigen::VectorXi& counts = analysis_.columnCounts;
    starts_.assign(1, 0);
    std::partial_sum(counts.begin(), counts.end(), std::back_inserter(starts_));
    rows_.resize(starts_.back());
    values_.resize(starts_.back());
    diagonal_.resize(counts.size());
  }
  void computeEntries(quor::VectorWidth width) {
    if (!analysis_.blocksPay ||
        !quor::factorizeFronts(*permuted_, analysis_.supernodes, analysis_.fronts, width,
                               {starts_.data(), rows_.data(), values_.data(), diagonal_.data()})) {
      throw std::runtime_error("the matrix is not factorized by fronts");
    }
  }
  /// Restores the triangle that the numeric step released.
  void permute(const Matrix& matrix) {
    permuted_ = std::make_unique<quor::PermutedTriangles>(matrix, order_, inverse_);
  }

 private:
  quor::Permutation order_, inverse_;
  std::unique_ptr<quor::PermutedTriangles> permuted_;
  quor::Analysis analysis_;
  std::vector<int> starts_;
  Eigen::VectorXi rows_;
  Eigen::VectorXd values_, diagonal_;
};

void printSteps(const std::vector<TaggedMesh>& meshes, int rounds) {
  std::printf(
      "\n### Steps of the construction\n\nSeconds. Assembly is all that is not a step of the "
      "factorization: partition, copies, blocks. CHOLMOD orders and analyzes in one "
      "step. In brackets our numeric step with the narrowest vectors.\n\n| Mesh | | Assembly | "
      "Ordering | Symbolic | Numeric "
      "|\n|---|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    const PlainAssembly reference = plainAssemble(mesh);
    const Matrix& matrix = *reference.stiffnessFF;
    auto ours = std::make_unique<OurSteps>();
    auto plain = std::make_unique<PlainFactor>();
    auto cholmod = std::make_unique<CholmodSolver>();
    PlainAssembly assembly;
    const std::vector<double> assemblies = sideBySide(
        rounds, {[&] { assembly = ourAssembly(mesh); }, [&] { assembly = plainAssemble(mesh); }},
        [&] { assembly = {}; });
    const std::vector<double> t = sideBySide(
        rounds,
        {[&] { ours->order(matrix); }, [&] { ours->analyze(); },
         [&] { ours->computeEntries(quor::widestVectors()); },
         [&] { ours->computeEntries(quor::VectorWidth::two); }, [&] { plain->order(matrix); },
         [&] { plain->analyze(); }, [&] { plain->factorizeNumerically(); },
         [&] { cholmod->analyze(matrix); }, [&] { cholmod->factorize(matrix); }},
        [&] { ours->permute(matrix); });
    std::printf("| %s | ours | %.4f | %.4f | %.4f | %.4f (%.4f) |\n", mesh.label().c_str(),
                assemblies[0], t[0], t[1], t[2], t[3]);
    std::printf("| | plain | %.4f | %.4f | %.4f | %.4f |\n", assemblies[1], t[4], t[5], t[6]);
    std::printf("| | CHOLMOD | %.4f | | %.4f | %.4f |\n", assemblies[1], t[7], t[8]);
    std::fflush(stdout);
  }
}

constexpr double kMegabyte = 1e6;

double megabytes(std::size_t bytes) {
  return static_cast<double>(bytes) / kMegabyte;
}

void printMemory(const std::vector<TaggedMesh>& meshes) {
  std::printf(
      "\n### Memory of the construction\n\nMegabytes: the peak; the handle that is left, with L; "
      "the first over the second; the plain method's peak.\n\n"
      "| Mesh | Peak | Handle | Peak / handle | plain Eigen's peak |\n|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    Handle ours;
    const MemoryUse use = memoryOf([&] { ours.construct(mesh); });
    ours.clear();
    std::unique_ptr<Plain> plain;
    const MemoryUse plainUse = memoryOf([&] { plain = std::make_unique<Plain>(mesh); });
    std::printf("| %s | %.1f | %.1f | %.2f | %.1f |\n", mesh.label().c_str(), megabytes(use.peak),
                megabytes(use.left), static_cast<double>(use.peak) / static_cast<double>(use.left),
                megabytes(plainUse.peak));
    std::fflush(stdout);
  }
}

void printAccuracy(const std::vector<TaggedMesh>& meshes) {
  std::printf(
      "\n### Agreement with Eigen's factor\n\nThe largest relative difference of an entry of L "
      "or D, and the residual |K x - b| of one solve.\n\n"
      "| Mesh | Same pattern | Difference | Residual, ours | Residual, Eigen |\n"
      "|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    Handle ours;
    ours.construct(mesh);
    const Plain plain(mesh);
    const auto& handle = *ours;
    const Matrix& matrix = *handle.stiffnessFF;
    PlainFactor eigen;
    eigen.compute(matrix);
    const Matrix& a = handle.factorFF->matrixL().nestedExpression();
    const Matrix& b = eigen.matrixL().nestedExpression();
    const bool same =
        a.nonZeros() == b.nonZeros() &&
        std::equal(a.innerIndexPtr(), a.innerIndexPtr() + a.nonZeros(), b.innerIndexPtr());
    const auto difference = [](const auto& x, const auto& y) {
      return ((x - y).abs() / (y.abs() + 1e-300)).maxCoeff();
    };
    const double largest =
        std::max(difference(a.coeffs(), b.coeffs()),
                 difference(handle.factorFF->vectorD().array(), eigen.vectorD().array()));
    const Eigen::VectorXd rhs =
        -(*handle.stiffnessFP * Eigen::VectorXd::LinSpaced(handle.stiffnessFP->cols(), 1.0, 2.0));
    const Eigen::VectorXd x = handle.factorFF->solve(rhs);
    const Eigen::VectorXd y = eigen.solve(rhs);
    std::printf("| %s | %s | %.1e | %.2e | %.2e |\n", mesh.label().c_str(), same ? "yes" : "NO",
                largest, (matrix * x - rhs).norm(), (matrix * y - rhs).norm());
    std::fflush(stdout);
  }
}

void printHard(const std::vector<TaggedMesh>& meshes, int rounds) {
  std::printf(
      "\n### Made to be slow\n\nSeconds of the whole construction and of finding the order in it; "
      "in brackets plain Eigen's over the library's.\n\n| Mesh | quorctorTagged | plain Eigen | "
      "Ordering, ours | Eigen's |\n|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    const PlainAssembly reference = plainAssemble(mesh);
    const Matrix& matrix = *reference.stiffnessFF;
    Handle handle;
    OurSteps ours;
    PlainFactor eigens;
    const std::vector<double> t =
        sideBySide(rounds,
                   {[&] { handle.construct(mesh); }, [&] { const Plain plain(mesh); },
                    [&] { ours.order(matrix); }, [&] { eigens.order(matrix); }},
                   [&] { handle.clear(); });
    std::printf("| %s | %.3f | %.3f (%.2fx) | %.3f | %.3f (%.2fx) |\n", mesh.label().c_str(), t[0],
                t[1], t[1] / t[0], t[2], t[3], t[3] / t[2]);
    std::fflush(stdout);
  }
}

void construct(const std::vector<TaggedMesh>& meshes, int rounds) {
  printTotals(meshes, rounds);
  printSteps(meshes, rounds);
  printMemory(meshes);
  printAccuracy(meshes);
  printHard({manyHubs(50000), manyHubs(100000), strip(2, 500000), strip(12, 83333)}, rounds);
}

/// A right-hand side of the handle's system, with or without a source.
Eigen::VectorXd rightHandSide(const quor::SolverHandle& handle, bool hasSource) {
  Eigen::VectorXd rhs =
      -(*handle.stiffnessFP * Eigen::VectorXd::LinSpaced(handle.stiffnessFP->cols(), 1.0, 2.0));
  if (hasSource) {
    rhs -= Eigen::VectorXd::LinSpaced(rhs.size(), 0.5, 1.0);
  }
  return rhs;
}

void printSolve(const TaggedMesh& mesh, int rounds, const Handle& ours, Cholmod& cholmod,
                bool hasSource) {
  const auto& factor = *(*ours).factorFF;
  const std::vector<double> values(mesh.tags.begin(), mesh.tags.end());
  const std::vector<double> source(values.size(), 0.5);
  std::vector<double> field(values.size());
  const Eigen::VectorXd rhs = rightHandSide(*ours, hasSource);
  Eigen::VectorXd x(rhs.size());
  StatusCode status = 0;
  const auto once = [&] {
    if (hasSource) {
      quorsolvePTagged(ours.pointer, values.data(), source.data(), field.data(), &status);
    } else {
      quorsolveTagged(ours.pointer, values.data(), field.data(), &status);
    }
  };
  const auto L = factor.matrixL().nestedExpression().coeffs();
  double sum = 0.0;
  const int repeats = std::max(1, 400000 / mesh.n());
  const auto times = [repeats](const std::function<void()>& job) {
    return [repeats, job] {
      for (int i = 0; i < repeats; ++i) {
        job();
      }
    };
  };
  std::vector<double> t = sideBySide(
      3 * rounds, {times(once), times([&] { x = factor.solve(rhs); }),
                   times([&] { x = cholmod.solver.solve(rhs); }), times([&] { sum += L.sum(); })});
  for (double& seconds : t) {
    seconds *= 1e3 / repeats;
  }
  const double reading = hasSource ? 2 * t[3] : t[3];
  std::printf("| %s | %s | %.3f | %.3f (%.2fx) | %.3f (%.2fx) | %.3f (%.2fx) | %.1f |\n",
              mesh.label().c_str(), hasSource ? "yes" : "no", t[0], t[1], t[1] / t[0], t[2],
              t[2] / t[0], reading, reading / t[0],
              static_cast<double>(memoryOf(once).peak) / mesh.n());
  std::fflush(stdout);
  if (std::isnan(sum)) {  // it is used, so that it is computed
    throw std::runtime_error("L is not finite");
  }
}

void solve(const std::vector<TaggedMesh>& meshes, int rounds) {
  std::printf(
      "\n### Solve\n\nMilliseconds; in brackets how many times the library's. The factor's own "
      "solve is Eigen's with the handle's factor and a right-hand side at hand. Reading is a sum "
      "of "
      "the values of L, taken twice with a source. Memory is what the call holds at its peak, in "
      "bytes a vertex.\n\n"
      "| Mesh | Source | quorsolveTagged, quorsolvePTagged | factor's own | CHOLMOD | reading L | "
      "Memory |\n|---|---|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    Handle ours;
    ours.construct(mesh);
    Cholmod cholmod(mesh);
    printSolve(mesh, rounds, ours, cholmod, false);
    printSolve(mesh, rounds, ours, cholmod, true);
    ours.clear();
  }
}

/// Several columns at once, each with a source, beside one and beside as many solves.
void printMany(const TaggedMesh& mesh, int rounds) {
  Handle ours;
  ours.construct(mesh);
  constexpr std::size_t kColumns = 8;
  const auto n = static_cast<std::size_t>(mesh.n());
  std::vector<double> values;
  std::vector<double> sources;
  for (std::size_t k = 0; k < kColumns * n; ++k) {
    values.push_back(mesh.tags[k % n] + static_cast<double>(k / n));
    sources.push_back(0.5 + static_cast<double>(k % 17));
  }
  std::vector<double> fields(values.size());
  StatusCode status = 0;
  const auto many = [&](std::size_t columns) {
    return [&, columns] {
      quor::solveFields(*ours, columns, values.data(), sources.data(), fields.data());
    };
  };
  const auto one = [&](std::size_t column) {
    quorsolvePTagged(ours.pointer, values.data() + column * n, sources.data() + column * n,
                     fields.data() + column * n, &status);
  };
  const auto eight = [&] {
    for (std::size_t column = 0; column < kColumns; ++column) {
      one(column);
    }
  };
  eight();
  const std::vector<double> expected = fields;
  std::fill(fields.begin(), fields.end(), 0.0);
  many(kColumns)();
  if (std::memcmp(fields.data(), expected.data(), fields.size() * sizeof(double)) != 0) {
    throw std::runtime_error("columns differ from their own solves");
  }
  const int repeats = std::max(1, 100000 / mesh.n());
  const auto times = [repeats](const std::function<void()>& job) {
    return [repeats, job] {
      for (int i = 0; i < repeats; ++i) {
        job();
      }
    };
  };
  std::vector<double> t = sideBySide(
      3 * rounds, {times([&] { one(0); }), times(many(3)), times(many(8)), times(eight)});
  for (double& seconds : t) {
    seconds *= 1e3 / repeats;
  }
  std::printf("| %s | %.3f | %.3f (%.2fx) | %.3f (%.2fx) | %.3f (%.2fx) | %.1f |\n",
              mesh.label().c_str(), t[0], t[1], t[1] / t[0], t[2], t[2] / t[0], t[3], t[3] / t[0],
              static_cast<double>(memoryOf(many(kColumns)).peak) / mesh.n());
  std::fflush(stdout);
  ours.clear();
}

void solveMany(const std::vector<TaggedMesh>& meshes, int rounds) {
  std::printf(
      "\n### Solve many\n\nMilliseconds of several columns, each with a source, at once; in "
      "brackets how many times one solve with a source. Every column has the bits of its own "
      "solve. Memory is what the call with eight holds at its peak, in bytes a vertex.\n\n"
      "| Mesh | One solve | Three at once | Eight at once | Eight solves | Memory |\n"
      "|---|---|---|---|---|---|\n");
  for (const TaggedMesh& mesh : meshes) {
    printMany(mesh, rounds);
  }
}

int runCommand(int argc, char** argv) {
  std::string what;
  std::vector<std::string> parts;
  std::string dragon;
  std::string bunny;
  int rounds = 5;
  CLI::App app("Measures construction and solve beside their peers.", "solver_bench");
  app.add_option("what", what, "construct or solve")
      ->required()
      ->check(CLI::IsMember({"construct", "solve"}));
  app.add_option("--part", parts, "CAD parts, from fine to coarse")->required();
  app.add_option("--dragon", dragon, "a scanned mesh")->required();
  app.add_option("--bunny", bunny, "another, coarser")->required();
  app.add_option("--rounds", rounds, "measurements of each")->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  std::vector<TaggedMesh> meshes;
  for (const std::string& part : parts) {
    meshes.push_back(tagEnds("CAD part", readSoup(part), 2));
  }
  for (const int side : {700, 186, 69}) {
    meshes.push_back(tagEnds("planar grid", planarGrid(side), 0));
  }
  const Soup scan = readSoup(dragon);
  meshes.push_back(tagEnds("dragon", scan, 1));
  meshes.push_back(tagEnds("part of the dragon", lowestShare(scan, 0.4), 0));
  meshes.push_back(tagEnds("part of the dragon", lowestShare(scan, 0.1), 0));
  Soup subdividedBunny = readSoup(bunny);
  for (int cut = 0; cut < 3; ++cut) {
    subdividedBunny = subdivided(subdividedBunny);
  }
  meshes.push_back(tagEnds("bunny, subdivided", subdividedBunny, 1));
  meshes.push_back(tagEnds("dragon, subdivided", subdivided(scan), 1));
  if (what == "construct") {
    construct(meshes, rounds);
  } else {
    solve(meshes, rounds);
    solveMany(meshes, rounds);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "solver_bench: %s\n", error.what());
  }
  return 1;
}
