/* The whole job in plain C99: weld a soup of two triangles, hold two corners, solve, read back. */
#include <math.h>
#include <quor.h>
#include <stdio.h>

int main(void) {
  const double points[18] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0};
  const int32_t corners[6] = {0, 1, 2, 3, 4, 5};
  double vertices[18];
  int32_t triangles[6], map[6], n, m;
  if (quorWeld(6, points, 2, corners, vertices, triangles, map, &n, &m, 1e-9) != 0 || n != 4 ||
      m != 2) {
    return 1;
  }
  const int32_t tags[4] = {1, 0, 2, 0};
  uint32_t prescribed;
  StatusCode status;
  void* handle;
  if (quorctorTagged(n, vertices, m, triangles, tags, &prescribed, &status, &handle) != 1 ||
      status != QUOR_SUCCESS || prescribed != 2 || quorinfo(handle) != QUOR_INFO_SUCCESS) {
    return 2;
  }
  double field[4] = {0, -1, 1, -1};
  quorsolveTagged(handle, field, field, &status);
  const double* stored;
  const int32_t* storedTriangles;
  if (status != QUOR_SUCCESS || fabs(field[1] - 0.5) > 1e-15 || fabs(field[3] - 0.5) > 1e-15 ||
      quoverts(handle, &stored) != 4 || quotris(handle, &storedTriangles) != 4) {
    return 3;
  }
  quorfree(handle);
  float x, y, z;
  encode_integer_to_sphere(1234, &x, &y, &z);
  return decode_integer_from_sphere(x, y, z) == 1234 ? 0 : 4;
}
