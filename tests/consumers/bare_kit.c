/* bare.c for the kit: a program without any runtime, made with a linker and the import library
 * alone. */
#include <quorkit.h>

int _fltused; /* what MSVC's objects with floating-point numbers ask for */

int start(void) {
  float x, y, z;
  return quorkitEncodeToSphere(4321, &x, &y, &z, 0) == QUORKIT_DONE &&
                 quorkitDecodeFromSphere(x, y, z) == 4321
             ? 0
             : 1;
}
