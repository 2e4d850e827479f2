/* A ball as a triangle soup becomes a mesh. */
#include <math.h>
#include <quor.h>
#include <stdio.h>

enum { SIDE = 8, M = 8 * SIDE * SIDE, POINTS = 3 * M };

static double points[3 * POINTS], vertices[3 * POINTS], together[POINTS];
static int32_t triangles[POINTS], map[POINTS], tags[POINTS], count;

/* One more point: (i, j) of an eighth of an octahedron, pushed out to the sphere, and, as if it
   came out of many files, a billionth off. */
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
  if (quorWeld(POINTS, points, M, triangles, vertices, triangles, map, &n, &m, 1e-6) != 0)
    return 1;
  printf("%d points became %d vertices, %d triangles are left of %d\n", POINTS, n, m, M);

  for (int point = 0; point < POINTS; ++point)
    together[map[point]] += 1; /* how many points became this vertex */

  StatusCode status;
  void* mesh;
  for (int i = 0; i < n; ++i)
    tags[i] = 1; /* nothing to solve for: all prescribed, and solver order is our order */
  quorctorTagged(n, vertices, m, triangles, tags, NULL, &status, &mesh);
  if (status != QUOR_SUCCESS)
    return 1;
  wobj(mesh, together, "weld");
  quorfree(mesh);
}
