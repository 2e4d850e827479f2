/* A square plate, cold along one edge and hot at one corner: from a soup to a coloured OBJ. */
#include <quor.h>
#include <stdio.h>

enum { SIDE = 40, M = 2 * SIDE * SIDE, POINTS = 3 * M };

static double points[3 * POINTS], vertices[3 * POINTS], field[POINTS], stored[POINTS];
static int32_t triangles[POINTS], map[POINTS], tags[POINTS];

/* Tags 1, 2 and 3 prescribe the value of a vertex; every other tag leaves it free. */
static int is_prescribed(int i) {
  return tags[i] >= 1 && tags[i] <= 3;
}

/* Solver order: the prescribed vertices, then the free ones from the last to the first. */
static void to_solver_order(int n) {
  int k = 0;
  for (int i = 0; i < n; ++i)
    if (is_prescribed(i))
      stored[k++] = field[i];
  for (int i = n - 1; i >= 0; --i)
    if (!is_prescribed(i))
      stored[k++] = field[i];
}

static int fail(const char* what, unsigned code) {
  fprintf(stderr, "%s: %u\n", what, code);
  return 1;
}

int main(void) {
  for (int point = 0; point < POINTS; ++point) { /* every triangle owns its three points */
    const int t = point / 3, dx[6] = {0, 1, 1, 0, 1, 0}, dy[6] = {0, 0, 1, 0, 1, 1};
    points[3 * point] = t / 2 % SIDE + dx[point % 6];
    points[3 * point + 1] = t / 2 / SIDE + dy[point % 6];
    triangles[point] = point;
  }
  int32_t n, m;
  if (quorWeld(POINTS, points, M, triangles, vertices, triangles, map, &n, &m, 1e-6) != 0)
    return fail("a count or the tolerance is refused", 1);

  for (int i = 0; i < n; ++i) {
    const double x = vertices[3 * i], y = vertices[3 * i + 1];
    tags[i] = x == 0 ? 1 : x + y > 2 * SIDE - 8 ? 2 : 0;
    field[i] = tags[i] == 1 ? 20 : 100; /* degrees, read where the vertex is prescribed */
  }
  StatusCode status;
  void* solver;
  quorctorTagged(n, vertices, m, triangles, tags, NULL, &status, &solver);
  if (status != QUOR_SUCCESS)
    return fail("the mesh is rejected, status", status);
  if (quorinfo(solver) != QUOR_INFO_SUCCESS)
    return fail("the matrix is singular, info", quorinfo(solver));

  quorsolveTagged(solver, field, field, &status); /* as often as you like, with other values */
  to_solver_order(n);
  wobj(solver, stored, "plate"); /* plate.obj, plate.mtl; put assets/viridis.PNG beside them */
  quorfree(solver);
  FILE* legend = fopen("plate.json", "w"); /* what the colours mean, for the viewer */
  if (legend == NULL)
    return fail("cannot write plate.json", 1);
  fputs("{\"quor\": 1, \"unit\": \"°C\", \"minimum\": 20, \"maximum\": 100}\n", legend);
  fclose(legend);
  return 0;
}
