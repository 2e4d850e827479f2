// The integer-on-sphere code: its domain is small enough to be tested whole.

#include "support/handle.h"

using namespace test;

namespace {

constexpr float kNaNF = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinityF = std::numeric_limits<float>::infinity();

TEST(Sphere, ExhaustiveRoundTrip) {
  for (std::int32_t value = -1; value <= 65534; ++value) {
    float x = 0;
    float y = 0;
    float z = 0;
    ASSERT_EQ(encode_integer_to_sphere(value, &x, &y, &z), 0);
    ASSERT_NEAR(double(x) * x + double(y) * y + double(z) * z, 1.0, 2e-7);
    ASSERT_GE(z, 0.7071F);
    ASSERT_EQ(decode_integer_from_sphere(x, y, z), value);
    ASSERT_EQ(decode_integer_from_sphere(-x, -y, -z), value);
  }
}

TEST(Sphere, KnownPoints) {
  struct Case {
    std::int32_t value;
    float x, y, z;
  };
  const Case cases[] = {{0, -0.5F, -0.5F, 0.70710677F},
                        {-1, 0.5F, 0.5F, 0.70710677F},
                        {65534, 0.49607849F, 0.5F, 0.70986348F},
                        {256, -0.5F, -0.49607843F, 0.70986348F}};
  for (const Case& c : cases) {
    float x = 9;
    float y = 9;
    float z = 9;
    EXPECT_EQ(encode_integer_to_sphere(c.value, &x, &y, &z), 0);
    EXPECT_EQ(x, c.x);
    EXPECT_EQ(y, c.y);
    EXPECT_EQ(z, c.z);
  }
}

TEST(Sphere, EncodeRefusals) {
  for (const std::int32_t value : {-2, 65535, 2147483647, -2147483647 - 1}) {
    float x = 9;
    float y = 9;
    float z = 9;
    EXPECT_EQ(encode_integer_to_sphere(value, &x, &y, &z), -1);
    EXPECT_EQ(x, 0.0F);
    EXPECT_EQ(y, 0.0F);
    EXPECT_EQ(z, 0.0F);
    for (int missing = 0; missing < 3; ++missing) {
      x = y = z = 9;
      EXPECT_EQ(encode_integer_to_sphere(7, missing == 0 ? nullptr : &x,
                                         missing == 1 ? nullptr : &y, missing == 2 ? nullptr : &z),
                -1);
      EXPECT_EQ(x + y + z, 27.0F);
    }
  }
}

TEST(Sphere, DecodesAnyPoint) {
  // The byte of x stands in the result alone when y is 0 (byte 128, that is 32768) and z is 1.
  struct Case {
    float x;
    std::int32_t byte;
  };
  const Case cases[] = {
      {0.0F, 128},
      {0.51F, 255},
      {-0.51F, 255},
      {-0.5019F, 0},
      {-0.502F, 0},
      {-0.506F, 255},
      {kNaNF, 0},
      {kInfinityF, 0},
      {-kInfinityF, 0},
      {1e30F, 0},
      {-1e30F, 0},
      // The low 32 bits of 255 x + 128: all lie in the upper half here, or are 0.
      {0x1p24F, 255},
      {-0x1p24F, 255},
      {0x1p55F, 0},
      {0x1p62F, 0},
      {16843008.0F, 0},  // 255 x is 256 below 2^32, and half way to it rounds to 2^32
  };
  for (const Case& c : cases) {
    EXPECT_EQ(decode_integer_from_sphere(c.x, 0, 1), 32768 + c.byte) << c.x;
    EXPECT_EQ(decode_integer_from_sphere(0, c.x, 1), 256 * c.byte + 128) << c.x;
  }
  EXPECT_EQ(decode_integer_from_sphere(0, 0, -1), 32896);
  EXPECT_EQ(decode_integer_from_sphere(0.5F, 0.5F, 0), -1);
  EXPECT_EQ(decode_integer_from_sphere(0.5F, 0.5F, -0.0F), -1);  // minus zero is not negative
  EXPECT_EQ(decode_integer_from_sphere(-0.5F, -0.5F, -1), -1);
  EXPECT_EQ(decode_integer_from_sphere(0.25F, 0.25F, kNaNF), 191 * 256 + 64);  // x alone mirrored
  EXPECT_EQ(decode_integer_from_sphere(-0.51F, 0, 1), 33023);
}

}  // namespace
