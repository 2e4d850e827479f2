// Numbers as text where the standard library writes no doubles by itself: through printf.

#include "export/number_text.h"
#include "support/numeric_locale.h"

#include <algorithm>
#include <array>
#include <limits>
#include <random>

using namespace test;

namespace {

/// What a writer writes. It must keep to the room that it asks for.
template <typename Writer>
std::string textOf(const Writer& writer, double number, int digits) {
  std::array<char, quor::kLongestNumber + 8> room;
  room.fill('#');
  char* const end = writer(room.data(), number, digits);
  EXPECT_EQ(std::count(room.begin() + quor::kLongestNumber, room.end(), '#'), 8);
  return {room.data(), end};
}

void expectTheSameTexts() {
  std::mt19937_64 random(1);
  std::vector<double> numbers = {0.0, -0.0, 1.0, 0.5, -1234567.0, 1e-5, 123456.5, 1e6};
  for (const double edge : {-std::numeric_limits<double>::max(), -2.2250738585072014e-308, 5e-324,
                            -1.2345678901234567e-300, std::numeric_limits<double>::infinity()}) {
    numbers.push_back(edge);
  }
  for (int k = 0; k < 2000; ++k) {
    numbers.push_back(std::ldexp(double(random()) - 9e18, int(random() % 2000) - 1040));
  }
  for (const double number : numbers) {
    for (const int digits : {1, 6, 9, 17}) {
      ASSERT_EQ(textOf(quor::writeNumberWithPrintf, number, digits),
                textOf(quor::writeNumber, number, digits))
          << number << ", " << digits << " digits";
    }
  }
}

TEST(NumberText, IsTheSameThroughPrintf) {
  expectTheSameTexts();
}

TEST(NumberText, IsTheSameThroughPrintfInLocalesWithOtherSeparators) {
  for (const auto& [separator, bytes] : {std::pair(",", ","), std::pair("<U066B>", "\xd9\xab")}) {
    const NumericLocale locale(separator);
    if (NumericLocale::decimalPoint() != bytes) {
      GTEST_SKIP() << "no locale with the separator " << separator;
    }
    expectTheSameTexts();
  }
}

}  // namespace
