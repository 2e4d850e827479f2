/* A ball as a triangle soup becomes a mesh. */
#include <math.h>
#include <quorkit.h>
#include <stdio.h>

enum { SIDE = 8, M = 8 * SIDE * SIDE, POINTS = 3 * M };

static double points[3 * POINTS], vertices[3 * POINTS], together[POINTS];
static int32_t triangles[POINTS], map[POINTS], count;

/* Adds point (i, j) of an eighth of an octahedron, projected to the sphere and moved by some
   billionths. */
static void put(int eighth, int i, int j) {
  const double x = eighth & 1 ? -i : i, y = eighth & 2 ? -j : j;
  const double z = eighth & 4 ? i + j - SIDE : SIDE - i - j;
  const double length = sqrt(x * x + y * y + z * z);
  points[3 * count] = x / length + 1e-9 * (count % 7);
  points[3 * count + 1] = y / length;
  points[3 * count + 2] = z / length;
  triangles[count] = count;
  ++count;
}

int main(void) {
  for (int eighth = 0; eighth < 8; ++eighth)
    for (int i = 0; i < SIDE; ++i)
      for (int j = 0; i + j < SIDE; ++j) {
        put(eighth, i, j), put(eighth, i + 1, j), put(eighth, i, j + 1);
        if (i + j + 1 < SIDE)
          put(eighth, i + 1, j), put(eighth, i + 1, j + 1), put(eighth, i, j + 1);
      }

  int32_t n, m;
  QuorkitError error;
  if (quorkitWeld(POINTS, points, M, triangles, vertices, triangles, map, &n, &m, 1e-6, &error) !=
      QUORKIT_DONE) {
    printf("%s\n", error.text);
    return 1;
  }
  printf("%d points became %d vertices, %d triangles are left of %d\n", POINTS, (int)n, (int)m, M);

  for (int point = 0; point < POINTS; ++point)
    together[map[point]] += 1; /* how many points became this vertex */
  return quorkitWrite(n, vertices, m, triangles, together, "weld", NULL, 0.001, NULL);
}
