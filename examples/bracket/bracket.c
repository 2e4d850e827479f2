/* From the raw triangles of a part, bracket.stl, to a coloured OBJ. A plug-in asks its host for the
   triangles instead. */
#include <math.h>
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>

static QuorkitError error;

static void done(QuorkitStatus status) {
  if (status != QUORKIT_DONE) {
    fprintf(stderr, "%s\n", error.text);
    exit(1);
  }
}

/* The nine coordinates of each triangle. Binary STL: 80 bytes, a count, and for each triangle
   twelve floats, of which the first three are its normal, and two bytes. */
static double* read_stl(const char* path, int32_t* count) {
  FILE* file = fopen(path, "rb");
  if (file == NULL || fseek(file, 80, SEEK_SET) != 0 || fread(count, 4, 1, file) != 1)
    return NULL;
  double* points = malloc(sizeof *points * 9 * (size_t)*count);
  float facet[12];
  for (int32_t t = 0; points != NULL && t < *count; ++t) {
    if (fread(facet, 4, 12, file) != 12 || fseek(file, 2, SEEK_CUR) != 0)
      return NULL;
    for (int k = 0; k < 9; ++k)
      points[9 * t + k] = facet[3 + k];
  }
  fclose(file);
  return points;
}

/* 80 degrees on the face at the low end of x, 30 at the other end, and NaN, which is free, on all
   other triangles. */
static void prescribe(const QuorkitMesh* part, double* values) {
  const double* x = part->vertices;
  double low = INFINITY, high = -INFINITY;
  for (int32_t i = 0; i < part->vertexCount; ++i)
    low = fmin(low, x[3 * i]), high = fmax(high, x[3 * i]);
  for (int32_t t = 0; t < part->triangleCount; ++t) {
    const int32_t* corner = part->triangles + 3 * t;
    const double a = x[3 * corner[0]], b = x[3 * corner[1]], c = x[3 * corner[2]];
    values[t] = fmax(a, fmax(b, c)) < low + 0.001    ? 80
                : fmin(a, fmin(b, c)) > high - 0.001 ? 30
                                                     : NAN;
  }
}

int main(void) {
  int32_t count, n, m;
  double* points = read_stl("bracket.stl", &count);
  int32_t* triangles = malloc(sizeof *triangles * 3 * (size_t)count);
  int32_t* map = malloc(sizeof *map * 3 * (size_t)count);
  double* values = malloc(sizeof *values * (size_t)count);
  if (points == NULL || triangles == NULL || map == NULL || values == NULL)
    return 1;
  for (int32_t k = 0; k < 3 * count; ++k)
    triangles[k] = k; /* every triangle owns its points */

  const QuorkitMesh* part;
  const QuorkitSolution* result;
  done(quorkitWeld(3 * count, points, count, triangles, points, triangles, map, &n, &m, 1e-4,
                   &error));
  done(quorkitClean(n, points, m, triangles, &part, &error));
  prescribe(part, values);
  const QuorkitProblem problem = {.n = part->vertexCount,
                                  .vertices = part->vertices,
                                  .m = part->triangleCount,
                                  .triangles = part->triangles,
                                  .triangleValues = values,
                                  .tolerance = 0.01,
                                  .isShareOfSpan = 1};
  done(quorkitSolveWithin(&problem, NULL, NULL, &result, &error));
  done(quorkitWrite(result->vertexCount, result->vertices, result->triangleCount, result->triangles,
                    result->field, "bracket", "viridis.PNG", 0.001, &error));
  FILE* legend = fopen("bracket.json", "w");
  if (legend == NULL)
    return 1;
  fprintf(
      legend,
      "{\"quor\": 1, \"unit\": \"\\u00b0C\", \"minimum\": 30, \"maximum\": 80, \"error\": %.2f}",
      result->error);
  fclose(legend);
  printf("%d triangles, estimated error %.2f degrees\n", (int)result->triangleCount, result->error);
  quorkitFreeSolution(result);
  quorkitFreeMesh(part);
  free(points), free(triangles), free(map), free(values);
  return 0;
}
