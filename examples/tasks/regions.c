/* An angle of sheet metal, 40 mm by 40 mm by 100 mm, from the soup and face numbers of a host to
   the flow in it: what a plug-in does that carries faces along. Returns 1 if anything is not as
   expected.
 */
#include <math.h>
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>

enum { M = 4, POINTS = 3 * M };

/* Two rectangles that meet along x, each of two long triangles. */
static double points[3 * POINTS] = {
    0, 0, 0, 100, 0, 0,  100, 40, 0, 0, 0, 0, 100, 40, 0,  0,   40, 0,  /* face 7, lying  */
    0, 0, 0, 100, 0, 40, 100, 0,  0, 0, 0, 0, 0,   0,  40, 100, 0,  40, /* face 9, standing */
};
static const int32_t hostFaces[M] = {7, 7, 9, 9};

static QuorkitError error;

static void done(QuorkitStatus status) {
  if (status != QUORKIT_DONE) {
    fprintf(stderr, "%s: %s\n", quorkitStatusText(status), error.text);
    exit(1);
  }
}

static void* array(int32_t count, size_t size) {
  void* memory = calloc((size_t)count, size);
  if (memory == NULL)
    exit(1);
  return memory;
}

/* The face numbers of the host follow the triangles through the weld. */
static void weld(int32_t* triangles, int32_t* faces, int32_t* n, int32_t* m) {
  int32_t map[POINTS], origins[M];
  for (int32_t k = 0; k < POINTS; ++k)
    triangles[k] = k;
  done(quorkitWeldOrigins(POINTS, points, M, triangles, points, triangles, map, origins, n, m, 1e-4,
                          &error));
  for (int32_t t = 0; t < *m; ++t)
    faces[t] = hostFaces[origins[t]];
}

/* Edges of 4 mm, and down to 0.5 mm at the first vertex. */
static const QuorkitMesh* refine(int32_t n, int32_t m, const int32_t* triangles,
                                 const int32_t* faces) {
  const QuorkitMesh *flipped, *mesh;
  done(quorkitFlip(n, points, m, triangles, faces, &flipped, &error));
  double sizes[POINTS];
  for (int32_t v = 0; v < n; ++v)
    sizes[v] = v == 0 ? 0.5 : INFINITY;
  done(quorkitRefineGraded(n, flipped->vertices, m, flipped->triangles, 4, sizes, &mesh, &error));
  quorkitFreeMesh(flipped);
  return mesh;
}

int main(void) {
  int32_t triangles[POINTS], faces[M], n, m;
  weld(triangles, faces, &n, &m);
  const QuorkitFaces* found; /* for hosts without face numbers */
  done(quorkitFaces(n, points, m, triangles, 30, &found, &error));
  printf("%d vertices, %d faces\n", (int)n, (int)found->faceCount);
  quorkitFreeFaces(found);
  const QuorkitMesh* mesh = refine(n, m, triangles, faces);
  n = mesh->vertexCount, m = mesh->triangleCount;

  /* Region 1 is one end, at 20 degrees. The lying face takes 0.01 W per square millimeter. */
  int32_t *tags = array(n, sizeof *tags), *regions = array(n, sizeof *regions);
  double *values = array(n, sizeof *values), *source = array(n, sizeof *source);
  double *field = array(n, sizeof *field), *gradients = array(3 * m, sizeof *gradients);
  done(quorkitAreas(n, mesh->vertices, m, mesh->triangles, source, &error));
  for (int32_t v = 0; v < n; ++v) {
    const double* p = mesh->vertices + 3 * v;
    tags[v] = p[0] == 100;
    regions[v] = tags[v] == 1 ? 1 : -1;
    values[v] = 20;
    source[v] *= p[2] == 0 && p[1] > 0 ? -0.01 : 0;
  }
  QuorkitReport report;
  done(
      quorkitCheckRegions(n, mesh->vertices, m, mesh->triangles, regions, values, &report, &error));

  QuorkitSolver* solver;
  QuorkitSolverInfo info;
  done(quorkitConstruct(n, mesh->vertices, m, mesh->triangles, tags, NULL, NULL, &solver, &error));
  done(quorkitSolverInfo(solver, &info, &error));
  done(quorkitSolve(solver, values, source, field, &error));
  quorkitFreeSolver(solver);
  done(quorkitGradients(n, mesh->vertices, m, mesh->triangles, field, gradients, &error));
  double steepest = 0;
  for (int32_t t = 0; t < m; ++t)
    steepest =
        fmax(steepest, hypot(hypot(gradients[3 * t], gradients[3 * t + 1]), gradients[3 * t + 2]));
  printf("%d triangles, %d prescribed vertices, steepest gradient %.2f\n", (int)m,
         (int)info.prescribedCount, steepest);
  quorkitFreeMesh(mesh);
  free(tags), free(regions), free(values), free(source), free(field), free(gradients);
  return info.factorization != 0 || report.isolatedPrescribed.count != 0 ||
         report.touchingRegions.count != 0;
}
