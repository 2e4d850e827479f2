/* Two chips on a metal plate whose edge is cooled. */
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>

enum { SIDE = 80, ROW = SIDE + 1, N = ROW * ROW, M = 2 * SIDE * SIDE };

static double vertices[3 * N], edge[N], source[N], field[N];
static int32_t triangles[3 * M], tags[N];

static QuorkitError error;

static void done(QuorkitStatus status) {
  if (status != QUORKIT_DONE) {
    printf("%s\n", error.text);
    exit(1);
  }
}

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

  QuorkitSolver* solver;
  done(quorkitConstruct(N, vertices, M, triangles, tags, NULL, NULL, &solver, &error));
  done(quorkitSolve(solver, edge, source, field, &error));
  quorkitFreeSolver(solver);
  double flows[2]; /* of tag 0, the free vertices, and of tag 1, the edge */
  done(quorkitFlow(N, vertices, M, triangles, field, tags, 2, flows, &error));
  printf("the edge drains %.2f W\n", -conductance * flows[1]);

  double hottest = 0;
  for (int i = 0; i < N; ++i) { /* the same plate with the temperature as its height */
    hottest = field[i] > hottest ? field[i] : hottest;
    vertices[3 * i + 2] = field[i] - 20;
  }
  printf("the hottest vertex is at %.1f degrees\n", hottest);
  done(quorkitWrite(N, vertices, M, triangles, field, "source", NULL, 0.001, &error));
  return 0;
}
