/* The temperature of a ring that is heated at one place and cooled at another. */
#include <math.h>
#include <quor.h>
#include <stdio.h>

enum { ROUND = 160, TUBE = 64, N = ROUND * TUBE, M = 2 * N };

static double vertices[3 * N], field[N], stored[N];
static int32_t triangles[3 * M], tags[N];

/* Tags 1, 2 and 3 prescribe the value of a vertex; every other tag leaves it free. */
static int is_prescribed(int i) {
  return tags[i] >= 1 && tags[i] <= 3;
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

  uint32_t prescribed;
  StatusCode status;
  void* solver;
  quorctorTagged(N, vertices, M, triangles, tags, &prescribed, &status, &solver);
  if (status != QUOR_SUCCESS || quorinfo(solver) != QUOR_INFO_SUCCESS)
    return 1;
  printf("%u of %d vertices are prescribed\n", prescribed, N);

  for (double hot = 40; hot <= 100; hot += 20) { /* factorized once, solved as often as you like */
    for (int i = 0; i < N; ++i)
      field[i] = tags[i] == 1 ? hot : 20; /* read where the vertex is prescribed */
    quorsolveTagged(solver, field, field, &status);
    printf("heated to %3.0f degrees: %.2f on the far side\n", hot, field[N / 2]);
  }

  int k =
      0; /* solver order: the prescribed vertices, then the free ones from the last to the first */
  for (int i = 0; i < N; ++i)
    if (is_prescribed(i))
      stored[k++] = field[i];
  for (int i = N - 1; i >= 0; --i)
    if (!is_prescribed(i))
      stored[k++] = field[i];
  wobj(solver, stored, "solve");
  quorfree(solver);
}
