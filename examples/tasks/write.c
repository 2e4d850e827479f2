/* A field and its mesh as files that a viewer opens. */
#include <math.h>
#include <quor.h>
#include <stdio.h>

enum { ROUND = 240, RINGS = 40, N = ROUND * RINGS, M = 2 * ROUND * (RINGS - 1) };

static double vertices[3 * N], field[N], stored[N];
static int32_t triangles[3 * M], tags[N];

/* Tags 1, 2 and 3 prescribe the value of a vertex; every other tag leaves it free. */
static int is_prescribed(int32_t tag) {
  return tag >= 1 && tag <= 3;
}

/* What a solve returns is in our order, what wobj takes in that of the solver: the prescribed
   vertices, then the free ones from the last to the first. */
static void to_solver_order(int n, const int32_t* tag, const double* ours, double* solvers) {
  int k = 0;
  for (int i = 0; i < n; ++i)
    if (is_prescribed(tag[i]))
      solvers[k++] = ours[i];
  for (int i = n - 1; i >= 0; --i)
    if (!is_prescribed(tag[i]))
      solvers[k++] = ours[i];
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

  StatusCode status;
  void* solver;
  quorctorTagged(N, vertices, M, triangles, tags, NULL, &status, &solver);
  if (status != QUOR_SUCCESS || quorinfo(solver) != QUOR_INFO_SUCCESS)
    return 1;
  quorsolveTagged(solver, field, field, &status);
  to_solver_order(N, tags, field, stored);
  wobj(solver, stored, "write");
  quorfree(solver);
  printf("wrote write.obj and write.mtl\n");
}
