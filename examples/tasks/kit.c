/* A drilled plate as a CAD host draws it, from raw triangles to colours, in a host that catches
 * nothing. */
#include <math.h>
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>

enum { SIDES = 32, POINTS = 2 * SIDES };

static double points[3 * POINTS];
static int32_t triangles[3 * POINTS];

/* A square of 100 mm with a round hole of 20 mm in it: long triangles from the hole to the border.
 */
static void draw_plate(void) {
  for (int i = 0; i < SIDES; ++i) {
    const double angle = 2 * 3.14159265358979 * i / SIDES, x = cos(angle), y = sin(angle);
    const double border = 50 / fmax(fabs(x), fabs(y));
    const int next = (i + 1) % SIDES;
    points[6 * i] = 10 * x, points[6 * i + 1] = 10 * y;
    points[6 * i + 3] = border * x, points[6 * i + 4] = border * y;
    const int32_t both[] = {2 * i, 2 * i + 1, 2 * next + 1, 2 * i, 2 * next + 1, 2 * next};
    for (int k = 0; k < 6; ++k)
      triangles[6 * i + k] = both[k];
  }
}

static int32_t show(double fraction, void* cancelled) {
  return fraction < 1 && *(int*)cancelled; /* paint a bar, handle events */
}

static QuorkitError error; /* why the last call failed */

static void require(QuorkitStatus status) {
  if (status != QUORKIT_DONE) {
    printf("%s\n", error.text);
    exit(1);
  }
}

int main(void) {
  draw_plate();
  QuorkitReport raw, report;
  require(quorkitCheck(POINTS, points, POINTS, triangles, NULL, &raw, &error));
  printf("raw: %d triangles, longest edge %.1f mm\n", POINTS, raw.longestEdge);

  const QuorkitMesh *clean, *mesh;
  require(quorkitClean(POINTS, points, POINTS, triangles, &clean, &error));
  require(quorkitRefine(clean->vertexCount, clean->vertices, clean->triangleCount, clean->triangles,
                        raw.diagonal / 32, &mesh, &error));
  const int32_t n = mesh->vertexCount, m = mesh->triangleCount;
  printf("refined: %d triangles, none longer than %.1f mm\n", (int)m, mesh->longestEdge);

  int32_t* tags = calloc((size_t)n, sizeof *tags);
  double* values = calloc((size_t)n, sizeof *values);
  double* field = calloc((size_t)n, sizeof *field);
  for (int32_t i = 0; i < n; ++i) {
    const double x = mesh->vertices[3 * i], y = mesh->vertices[3 * i + 1];
    tags[i] = hypot(x, y) < 10.001 || x > 49.999; /* the hole is hot, one side is cold */
    values[i] = x > 49.999 ? 20 : 80;
  }
  require(quorkitCheck(n, mesh->vertices, m, mesh->triangles, tags, &report, &error));
  printf("%d prescribed, %d components, %d of them without a prescribed vertex\n",
         (int)report.prescribedVertices.count, (int)report.pieces.count,
         (int)report.unprescribedPieces.count);

  int cancelled = 0;
  QuorkitSolver* solver;
  require(quorkitConstruct(n, mesh->vertices, m, mesh->triangles, tags, show, &cancelled, &solver,
                           &error));
  require(quorkitSolve(solver, values, NULL, field, &error));
  quorkitFreeSolver(solver);
  require(quorkitWrite(n, mesh->vertices, m, mesh->triangles, field, "kit", NULL, 0.001, &error));
  printf("at the opposite side: %.0f degrees\n", field[2 * (SIDES / 2) + 1]);
  quorkitFreeMesh(mesh);
  quorkitFreeMesh(clean);
  free(tags), free(values), free(field);
  return 0;
}
