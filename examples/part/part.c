/* part FILE.stl RAMP: a part from a CAD system, 80 degrees at the low end of x and 30 at the
   other: from the triangles to a coloured OBJ, part.obj, with numbers on its legend, part.json.
 */
#include <ctype.h>
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void require(int holds, const char* otherwise) {
  if (!holds) {
    fprintf(stderr, "part: %s\n", otherwise);
    exit(1);
  }
}

static QuorkitError error; /* why the last call failed */

static void done(QuorkitStatus status) {
  require(status == QUORKIT_DONE, error.text);
}

static void* array(size_t length, size_t size) {
  void* memory = calloc(length + 1, size);
  require(memory != NULL, "out of memory");
  return memory;
}

/* The whole file, with a zero after it. */
static char* read_file(const char* path, size_t* size) {
  FILE* file = fopen(path, "rb");
  require(file != NULL, "cannot open the part");
  fseek(file, 0, SEEK_END);
  *size = (size_t)ftell(file);
  char* bytes = array(*size, 1);
  rewind(file);
  require(fread(bytes, 1, *size, file) == *size, "cannot read the part");
  fclose(file);
  return bytes;
}

/* Binary STL is 80 bytes of anything, a count, and per triangle twelve floats, of which the first
   three are a normal, and two bytes; the lowest byte comes first. Null if it is not that. */
static double* read_binary(const char* bytes, size_t size, int32_t* count) {
  *count = 0;
  if (size >= 84)
    memcpy(count, bytes + 80, sizeof *count);
  if (*count <= 0 || size != 84 + 50 * (size_t)*count)
    return NULL;
  double* points = array(9 * (size_t)*count, sizeof *points);
  for (size_t k = 0; k < 9 * (size_t)*count; ++k) {
    float coordinate;
    memcpy(&coordinate, bytes + 84 + 50 * (k / 9) + 12 + 4 * (k % 9), sizeof coordinate);
    points[k] = coordinate;
  }
  return points;
}

/* The other STL is text: the coordinates follow the word "vertex", of every corner of a triangle.
   This is where those of the next one are; null after the last. */
static const char* next_corner(const char* text) {
  const char* at = text;
  while ((at = strstr(at, "vertex")) != NULL) {
    if (at > text && isspace((unsigned char)at[-1]) && isspace((unsigned char)at[6]))
      return at + 6;
    at += 6;
  }
  return NULL;
}

static double* read_text(const char* text, int32_t* count) {
  size_t corners = 0;
  for (const char* at = text; (at = next_corner(at)) != NULL;)
    ++corners;
  require(corners > 0 && corners % 3 == 0 && strstr(text, "endsolid") != NULL,
          "the part is not an STL file, or damaged");
  double* points = array(3 * corners, sizeof *points);
  const char* at = text;
  for (size_t k = 0; k < 3 * corners; ++k) {
    if (k % 3 == 0)
      at = next_corner(at);
    char* end;
    points[k] = strtod(at, &end);
    require(end != at, "the part is damaged: a number is missing");
    at = end;
  }
  *count = (int32_t)(corners / 3);
  return points;
}

/* The corners of all triangles. */
static double* read_stl(const char* path, int32_t* count) {
  size_t size;
  char* bytes = read_file(path, &size);
  double* points = read_binary(bytes, size, count);
  if (points == NULL)
    points = read_text(bytes, count);
  free(bytes);
  return points;
}

/* Files have six digits and viewers floats, too few far away from zero: coordinates there become
   relative to whole numbers near the low corner. */
static void move_near_zero(double* points, int32_t n, double diagonal, double* origin) {
  for (int axis = 0; axis < 3; ++axis) {
    double low = points[axis];
    for (int32_t i = 0; i < n; ++i) {
      const double x = points[3 * (size_t)i + (size_t)axis];
      low = x < low ? x : low;
    }
    const double size = low < 0 ? -low : low;
    origin[axis] = size > 10 * diagonal && size < 1e15 ? (double)(int64_t)low : 0;
    for (int32_t i = 0; i < n; ++i)
      points[3 * (size_t)i + (size_t)axis] -= origin[axis];
  }
}

/* Welded, without flat triangles, and fine enough: no edge longer than a 32nd part of the diagonal.
 */
static const QuorkitMesh* prepare(double* points, int32_t count, double* origin) {
  int32_t n = 3 * count, m = count, *triangles = array((size_t)n, sizeof *triangles);
  int32_t* map = array((size_t)n, sizeof *map);
  for (int32_t i = 0; i < n; ++i) /* every triangle owns its points */
    triangles[i] = i;
  QuorkitReport report;
  done(quorkitCheck(n, points, m, triangles, NULL, &report, &error));
  require(report.notFinite.count == 0, "the part is damaged: a coordinate is not finite");
  move_near_zero(points, n, report.diagonal, origin);
  done(quorkitWeld(n, points, m, triangles, points, triangles, map, &n, &m, 1e-6 * report.diagonal,
                   &error));
  const QuorkitMesh *clean, *mesh;
  done(quorkitClean(n, points, m, triangles, &clean, &error));
  require(clean->triangleCount > count / 2,
          "most triangles have no area: export the part again, near zero or as text");
  done(quorkitRefine(clean->vertexCount, clean->vertices, clean->triangleCount, clean->triangles,
                     report.diagonal / 32, &mesh, &error));
  quorkitFreeMesh(clean);
  free(triangles), free(map);
  return mesh;
}

/* Tags the outermost 2 % at both ends of x, and gives them their temperatures. */
static void tag_ends(const QuorkitMesh* mesh, int32_t* tags, double* degrees) {
  const double* x = mesh->vertices;
  double low = x[0], high = x[0];
  for (int32_t i = 0; i < mesh->vertexCount; ++i) {
    low = x[3 * (size_t)i] < low ? x[3 * (size_t)i] : low;
    high = x[3 * (size_t)i] > high ? x[3 * (size_t)i] : high;
  }
  for (int32_t i = 0; i < mesh->vertexCount; ++i) {
    const double share = (x[3 * (size_t)i] - low) / (high - low);
    tags[i] = share <= 0.02 ? 1 : share >= 0.98 ? 2 : 0; /* 1 and 2 are prescribed, 0 is free */
    degrees[i] = tags[i] == 1 ? 80 : 30;                 /* read where it is prescribed */
  }
}

int main(int argc, char** argv) {
  require(argc == 3, "usage: part FILE.stl viridis.PNG");
  int32_t count;
  double* points = read_stl(argv[1], &count);
  double origin[3];
  const QuorkitMesh* mesh = prepare(points, count, origin);
  const int32_t n = mesh->vertexCount, m = mesh->triangleCount;
  int32_t* tags = array((size_t)n, sizeof *tags);
  double* field = array((size_t)n, sizeof *field);
  tag_ends(mesh, tags, field);

  QuorkitReport report;
  done(quorkitCheck(n, mesh->vertices, m, mesh->triangles, tags, &report, &error));
  require(report.unprescribedPieces.count == 0, "a piece of the part reaches neither end of x");
  QuorkitSolver* solver;
  done(quorkitConstruct(n, mesh->vertices, m, mesh->triangles, tags, NULL, NULL, &solver, &error));
  done(quorkitSolve(solver, field, NULL, field, &error));
  done(quorkitWrite(n, mesh->vertices, m, mesh->triangles, field, "part", argv[2], 0.001, &error));
  FILE* legend = fopen("part.json", "w");
  require(legend != NULL, "cannot write part.json");
  fprintf(
      legend,
      "{\"quor\": 1, \"field\": \"temperature\", \"unit\": \"°C\", \"minimum\": 30, \"maximum\": "
      "80, \"origin\": [%.0f, %.0f, %.0f]}\n",
      origin[0], origin[1], origin[2]);
  fclose(legend);
  printf("part.obj: %d vertices, %d triangles of %d\n", (int)n, (int)m, (int)count);
  quorkitFreeSolver(solver);
  quorkitFreeMesh(mesh);
  free(points), free(tags), free(field);
  return 0;
}
