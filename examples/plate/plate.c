#include <quor.h>
#include <stdio.h>
enum { SIDE = 40, M = 2 * SIDE * SIDE, POINTS = 3 * M };

int main(void) {
  static double points[3 * POINTS], vertices[3 * POINTS], field[POINTS], stored[POINTS];
  static int32_t triangles[POINTS], map[POINTS], tags[POINTS], n, m;
  for (int point = 0; point < POINTS; ++point) { /* a square plate as a soup: */
    const int t = point / 3, dx[6] = {0, 1, 1, 0, 1, 0}, dy[6] = {0, 0, 1, 0, 1, 1};
    points[3 * point] = t / 2 % SIDE + dx[point % 6]; /* every triangle owns its points */
    points[3 * point + 1] = t / 2 / SIDE + dy[point % 6];
    triangles[point] = point;
  }
  quorWeld(POINTS, points, M, triangles, vertices, triangles, map, &n, &m, 1e-6);
  for (int i = 0; i < n; ++i) { /* the left edge is cold, the far corner hot, all else free */
    const double x = vertices[3 * i], y = vertices[3 * i + 1];
    tags[i] = x == 0 ? 1 : x + y > 2 * SIDE - 8 ? 2 : 0;
    field[i] = tags[i] == 2 ? 100 : 20; /* degrees */
  }
  StatusCode status;
  void* solver;
  quorctorTagged(n, vertices, m, triangles, tags, NULL, &status, &solver);
  if (status != QUOR_SUCCESS || quorinfo(solver) != QUOR_INFO_SUCCESS)
    return 1;
  quorsolveTagged(solver, field, field, &status);
  for (int i = 0, held = 0; i < n; held += tags[i++] != 0) /* solver order: held vertices first, */
    stored[tags[i] ? held : held + n - 1 - i] = field[i];  /* then the others, reversed */
  wobj(solver, stored, "plate"); /* plate.obj, plate.mtl; put assets/viridis.PNG beside them */
  quorfree(solver);
}
