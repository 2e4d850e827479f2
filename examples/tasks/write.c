/* A field and its mesh as files that a viewer opens. */
#include <math.h>
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>

enum { ROUND = 240, RINGS = 40, N = ROUND * RINGS, M = 2 * ROUND * (RINGS - 1) };

static double vertices[3 * N], field[N];
static int32_t triangles[3 * M], tags[N];

static QuorkitError error;

static void done(QuorkitStatus status) {
  if (status != QUORKIT_DONE) {
    printf("%s\n", error.text);
    exit(1);
  }
}

int main(void) {
  for (int i = 0; i < N; ++i) { /* a flower: its heart is hot, the tips of its petals are cold */
    const double r = 0.2 + 0.8 * (i / ROUND) / (RINGS - 1),
                 a = 6.283185307179586 * (i % ROUND) / ROUND;
    const double petal = cos(5 * a), reach = 1 + 0.25 * r * petal;
    vertices[3 * i] = r * reach * cos(a);
    vertices[3 * i + 1] = r * reach * sin(a);
    vertices[3 * i + 2] = 0.45 * r * r * petal;
    tags[i] = i < ROUND ? 1 : i >= N - ROUND && petal > 0.7 ? 2 : 0;
    field[i] = tags[i] == 1 ? 100 : 0;
  }
  for (int t = 0; t < M; ++t) {
    const int a = t / 2, b = a / ROUND * ROUND + (a + 1) % ROUND;
    triangles[3 * t] = a;
    triangles[3 * t + 1] = t % 2 ? b + ROUND : b;
    triangles[3 * t + 2] = t % 2 ? a + ROUND : b + ROUND;
  }

  QuorkitSolver* solver;
  done(quorkitConstruct(N, vertices, M, triangles, tags, NULL, NULL, &solver, &error));
  done(quorkitSolve(solver, field, NULL, field, &error));
  quorkitFreeSolver(solver);

  done(quorkitWrite(N, vertices, M, triangles, field, "write", NULL, 0.001, &error));
  printf("wrote write.obj and write.mtl\n");
  uint8_t rgba[4];
  done(quorkitColours(1, field, 0, 100, rgba, &error)); /* for hosts that color vertices */
  printf("the heart is %d %d %d\n", rgba[0], rgba[1], rgba[2]);
  return 0;
}
