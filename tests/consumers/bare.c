/* A program without any runtime, made with a linker and the import library alone. */
#include <quor.h>

int _fltused; /* what MSVC's objects with floating-point numbers ask for */

int start(void) {
  float x, y, z;
  return encode_integer_to_sphere(4321, &x, &y, &z) == 0 &&
                 decode_integer_from_sphere(x, y, z) == 4321
             ? 0
             : 1;
}
