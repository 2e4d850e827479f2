// How far a long computation is: shares of steps, what a host is told, and leaving at any report.

#include "util/progress.h"
#include "kit/progress_reporter.h"
#include "support/handle.h"

#include "api/solver_handle.h"
#include "operator/construct_tagged.h"

#include <chrono>
#include <thread>

using namespace test;

namespace {

/// Throws at one report.
class Leaver : public quor::Observer {
 public:
  explicit Leaver(std::size_t at) : at_(at) {}
  void advanceTo(double fraction) override {
    EXPECT_GE(fraction, reported.empty() ? 0 : reported.back());
    EXPECT_LE(fraction, 1 + 1e-9);
    reported.push_back(fraction);
    if (reported.size() > at_) {
      throw std::runtime_error("left");
    }
  }
  std::vector<double> reported;

 private:
  std::size_t at_;
};

TEST(Progress, AConstructionCanBeLeftAtAnyReport) {
  constexpr int kSide = 90;  // worth factorizing in blocks
  const Mesh mesh = bumpyMesh(kSide, kSide, 8);
  const std::vector<std::int32_t> tags = tagEnds(kSide, kSide);
  const auto construct = [&](Leaver& leaver) {
    return quor::constructTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                 tags.data(), quor::Progress(&leaver));
  };
  Leaver stayer(std::size_t(-1));
  EXPECT_NE(construct(stayer).handle, nullptr);
  const std::vector<double> all = stayer.reported;
  ASSERT_GE(all.size(), 8U);
  EXPECT_GT(all.back(), 0.99);
  for (std::size_t at = 0; at < all.size(); at += 1 + all.size() / 8) {
    Leaver leaver(at);
    EXPECT_THROW(construct(leaver), std::runtime_error);
    EXPECT_EQ(leaver.reported, std::vector<double>(all.begin(), all.begin() + at + 1));
  }
}

/// What the host was told.
std::int32_t note(double fraction, void* told) {
  static_cast<std::vector<double>*>(told)->push_back(fraction);
  return fraction == 0.75 ? 1 : 0;
}

TEST(Progress, AHostHearsOfGrowingFractionsAndItsWishToCancelIsHeard) {
  std::vector<double> told;
  quorkit::ProgressReporter reporter(&note, &told);
  const quor::Progress half = reporter.whole().part(0, 0.5);
  const auto report = [](const quor::Progress& step, double done) {
    std::this_thread::sleep_for(std::chrono::milliseconds(6));  // until it is told again
    step.report(done);
  };
  reporter.begin();
  report(half, 0.5);
  report(half, 0.25);                // not back
  report(half.part(0.5, 1.0), 1.0);  // a step of a step
  EXPECT_THROW(report(reporter.whole(), 0.75), quorkit::Cancelled);
  reporter.end();
  EXPECT_EQ(told, (std::vector<double>{0, 0.25, 0.25, 0.5, 0.75, 1}));
}

TEST(Progress, NobodyNeedsToListen) {
  quorkit::ProgressReporter reporter(nullptr, nullptr);
  reporter.begin();
  EXPECT_FALSE(reporter.whole());
  reporter.whole().part(0.25, 0.5).report(0.5);
  reporter.end();
}

}  // namespace
