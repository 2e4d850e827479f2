/* The temperature of a ring that is heated at one place and cooled at another. */
#include <math.h>
#include <quorkit.h>
#include <stdio.h>
#include <stdlib.h>

enum { ROUND = 160, TUBE = 64, N = ROUND * TUBE, M = 2 * N };

static double vertices[3 * N], regions[2 * N], basis[2 * N], field[N];
static int32_t triangles[3 * M], tags[N];

static QuorkitError error;

static void done(QuorkitStatus status) {
  if (status != QUORKIT_DONE) {
    printf("%s\n", error.text);
    exit(1);
  }
}

static int near(const double* p, double x, double y, double z) {
  return hypot(hypot(p[0] - x, p[1] - y), p[2] - z) < 0.35;
}

int main(void) {
  for (int i = 0; i < N; ++i) {
    const double a = 6.283185307179586 * (i / TUBE) / ROUND,
                 b = 6.283185307179586 * (i % TUBE) / TUBE;
    double* p = vertices + 3 * i;
    p[0] = (2 + 0.8 * cos(b)) * cos(a);
    p[1] = (2 + 0.8 * cos(b)) * sin(a);
    p[2] = 0.8 * sin(b);
    tags[i] = near(p, 0, -2.8, 0) ? 1 : near(p, 1.4, 1.4, 0.8) ? 2 : 0;

    const int up = i / TUBE * TUBE + (i + 1) % TUBE, over = (i + TUBE) % N, both = (up + TUBE) % N;
    const int32_t corners[6] = {i, over, up, up, over, both};
    for (int k = 0; k < 6; ++k)
      triangles[6 * i + k] = corners[k];
  }

  QuorkitReport report;
  done(quorkitCheck(N, vertices, M, triangles, tags, &report, &error));
  printf("%d of %d vertices are prescribed, %d components have none\n",
         (int)report.prescribedVertices.count, N, (int)report.unprescribedPieces.count);
  QuorkitSolver* solver;
  done(quorkitConstruct(N, vertices, M, triangles, tags, NULL, NULL, &solver, &error));

  for (int i = 0; i < N; ++i) { /* one column for each region: 1 on it, 0 on the other */
    regions[i] = tags[i] == 1;
    regions[N + i] = tags[i] == 2;
  }
  done(quorkitSolveMany(solver, 2, regions, NULL, basis, &error));
  quorkitFreeSolver(solver);

  for (double hot = 40; hot <= 100; hot += 20) { /* a slider: no solve, only a sum */
    for (int i = 0; i < N; ++i)
      field[i] = hot * basis[i] + 20 * basis[N + i];
    printf("heated to %3.0f degrees: %.2f on the far side\n", hot, field[N / 2]);
  }
  done(quorkitWrite(N, vertices, M, triangles, field, "solve", NULL, 0.001, &error));
  return 0;
}
