/* Two chips on a metal plate whose edge is cooled. */
#include <quor.h>
#include <stdio.h>

enum { SIDE = 80, ROW = SIDE + 1, N = ROW * ROW, M = 2 * SIDE * SIDE };

static double vertices[3 * N], edge[N], source[N], field[N];
static int32_t triangles[3 * M], tags[N];

static int inside(int x, int y, int left, int right, int bottom, int top) {
  return x >= left && x <= right && y >= bottom && y <= top;
}

int main(void) {
  const double conductance = 0.2; /* watts per kelvin: 1 mm thick, 200 W/(m K) */
  for (int i = 0; i < N; ++i) {
    const int x = i % ROW, y = i / ROW; /* millimetres */
    vertices[3 * i] = x;
    vertices[3 * i + 1] = y;
    tags[i] = x == 0 || y == 0 || x == SIDE || y == SIDE;
    edge[i] = 20;                     /* degrees */
    if (inside(x, y, 16, 31, 44, 59)) /* 12 W into 16 x 16 vertices */
      source[i] = -12.0 / 256 / conductance;
    if (inside(x, y, 45, 64, 20, 29)) /* 15 W into 20 x 10 */
      source[i] = -15.0 / 200 / conductance;
  }
  for (int t = 0; t < M; ++t) {
    const int a = t / 2 / SIDE * ROW + t / 2 % SIDE, b = a + ROW + 1;
    triangles[3 * t] = a;
    triangles[3 * t + 1] = t % 2 ? b : a + 1;
    triangles[3 * t + 2] = t % 2 ? a + ROW : b;
  }

  StatusCode status;
  void *solver, *relief;
  quorctorTagged(N, vertices, M, triangles, tags, NULL, &status, &solver);
  if (status != QUOR_SUCCESS || quorinfo(solver) != QUOR_INFO_SUCCESS)
    return 1;
  quorsolvePTagged(solver, edge, source, field, &status);
  quorfree(solver);

  double hottest = 0;
  for (int i = 0; i < N; ++i) { /* the same plate with the temperature as its height */
    hottest = field[i] > hottest ? field[i] : hottest;
    vertices[3 * i + 2] = field[i] - 20;
    tags[i] = 1;
  }
  printf("the hottest place is at %.1f degrees\n", hottest);
  quorctorTagged(N, vertices, M, triangles, tags, NULL, &status, &relief);
  wobj(relief, field, "source");
  quorfree(relief);
}
