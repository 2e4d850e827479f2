/* The whole job through quorkit.h in C99, the header included twice: a strip of two triangles,
   welded, refined, solved and written. */
#include <quorkit.h>

#include <stdio.h>

static int32_t neverCancel(double fraction, void* calls) {
  ++*(int*)calls;
  return fraction < 0 || fraction > 1;
}

int main(void) {
  const double points[] = {0, 0, 0, 8, 0, 0, 8, 1, 0, 0, 0, 0, 8, 1, 0, 0, 1, 0};
  const int32_t corners[] = {0, 1, 2, 3, 4, 5};
  double vertices[18];
  double values[4096];
  double field[4096];
  int32_t triangles[6];
  int32_t map[6];
  int32_t tags[4096];
  int32_t n, m, i;
  int calls = 0;
  QuorkitReport report;
  QuorkitError error = {0};
  const QuorkitMesh* mesh;
  QuorkitSolver* solver;
  QuorkitStatus status =
      quorkitWeld(6, points, 2, corners, vertices, triangles, map, &n, &m, 1e-9, &error);
  if (status == QUORKIT_DONE) {
    status = quorkitRefineTo(n, vertices, m, triangles, 1000, &mesh, &error);
  }
  if (status != QUORKIT_DONE) {
    fprintf(stderr, "%s\n", error.text);
    return 1;
  }
  for (i = 0; i < mesh->vertexCount; ++i) {
    const double x = mesh->vertices[3 * i];
    tags[i] = x == 0 || x == 8;
    values[i] = x;
  }
  status = quorkitCheck(mesh->vertexCount, mesh->vertices, mesh->triangleCount, mesh->triangles,
                        tags, &report, &error);
  if (status == QUORKIT_DONE) {
    status = quorkitConstruct(mesh->vertexCount, mesh->vertices, mesh->triangleCount,
                              mesh->triangles, tags, neverCancel, &calls, &solver, &error);
  }
  if (status == QUORKIT_DONE) {
    status = quorkitSolve(solver, values, NULL, field, &error);
    quorkitFreeSolver(solver);
  }
  if (status == QUORKIT_DONE) {
    status = quorkitWrite(mesh->vertexCount, mesh->vertices, mesh->triangleCount, mesh->triangles,
                          field, "strip", NULL, 0.001, &error);
  }
  if (status != QUORKIT_DONE || report.unprescribedPieces.count != 0 || calls < 2) {
    fprintf(stderr, "%s\n", error.text);
    return 1;
  }
  for (i = 0; i < mesh->vertexCount; ++i) { /* linear along the strip */
    const double wrong = field[i] - values[i];
    if (wrong > 1e-9 || wrong < -1e-9) {
      return 1;
    }
  }
  quorkitFreeMesh(mesh);
  return 0;
}
