/* Labels as directions, there and back. */
#include <quorkit.h>
#include <stdio.h>

enum { SIDE = 17, ROW = SIDE + 1, N = ROW * ROW, M = 2 * SIDE * SIDE };

static double vertices[3 * N], label[N];
static int32_t triangles[3 * M];

int main(void) {
  float x, y, z;
  for (int32_t value = -1; value < 65535; ++value)
    if (quorkitEncodeToSphere(value, &x, &y, &z, NULL) != QUORKIT_DONE ||
        quorkitDecodeFromSphere(x, y, z) != value || quorkitDecodeFromSphere(-x, -y, -z) != value)
      return 1;
  printf("all 65,536 labels came back, also from the mirrored directions\n");

  /* A picture of the code: every 15th value of both bytes, as a patch of the unit sphere. */
  for (int i = 0; i < N; ++i) {
    const int value = i / ROW * 15 * 256 + i % ROW * 15;
    quorkitEncodeToSphere(value < 65535 ? value : -1, &x, &y, &z, NULL);
    vertices[3 * i] = x;
    vertices[3 * i + 1] = y;
    vertices[3 * i + 2] = z;
    label[i] = value;
  }
  for (int t = 0; t < M; ++t) {
    const int a = t / 2 / SIDE * ROW + t / 2 % SIDE, b = a + ROW + 1;
    triangles[3 * t] = a;
    triangles[3 * t + 1] = t % 2 ? b : a + 1;
    triangles[3 * t + 2] = t % 2 ? a + ROW : b;
  }
  return quorkitWrite(N, vertices, M, triangles, label, "labels", NULL, 0.001, NULL);
}
