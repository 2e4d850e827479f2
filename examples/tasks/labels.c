/* Labels as directions, there and back. */
#include <quor.h>
#include <stdio.h>

enum { SIDE = 17, ROW = SIDE + 1, N = ROW * ROW, M = 2 * SIDE * SIDE };

static double vertices[3 * N], label[N];
static int32_t triangles[3 * M], tags[N];

int main(void) {
  float x, y, z;
  for (int32_t value = -1; value < 65535; ++value)
    if (encode_integer_to_sphere(value, &x, &y, &z) != 0 ||
        decode_integer_from_sphere(x, y, z) != value ||
        decode_integer_from_sphere(-x, -y, -z) != value)
      return 1;
  printf("all 65,536 labels came back, also from the mirrored directions\n");

  /* A picture of the code: every 15th value of both bytes, as a patch of the unit sphere. */
  for (int i = 0; i < N; ++i) {
    const int value = i / ROW * 15 * 256 + i % ROW * 15;
    encode_integer_to_sphere(value < 65535 ? value : -1, &x, &y, &z);
    vertices[3 * i] = x;
    vertices[3 * i + 1] = y;
    vertices[3 * i + 2] = z;
    label[i] = value;
    tags[i] = 1;
  }
  for (int t = 0; t < M; ++t) {
    const int a = t / 2 / SIDE * ROW + t / 2 % SIDE, b = a + ROW + 1;
    triangles[3 * t] = a;
    triangles[3 * t + 1] = t % 2 ? b : a + 1;
    triangles[3 * t + 2] = t % 2 ? a + ROW : b;
  }
  StatusCode status;
  void* mesh;
  quorctorTagged(N, vertices, M, triangles, tags, NULL, &status, &mesh);
  if (status != QUOR_SUCCESS)
    return 1;
  wobj(mesh, label, "labels");
  quorfree(mesh);
}
