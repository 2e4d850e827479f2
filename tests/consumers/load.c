/* A host that knows nothing but the name of the library: load NAME. */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
  void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) {
    fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "usage: load NAME");
    return 1;
  }
  int32_t (*encode)(int32_t, float*, float*, float*);
  int32_t (*decode)(float, float, float);
  /* ISO C has no cast from an object pointer to a function pointer. */
  void* symbol = dlsym(library, "encode_integer_to_sphere");
  memcpy(&encode, &symbol, sizeof symbol);
  symbol = dlsym(library, "decode_integer_from_sphere");
  memcpy(&decode, &symbol, sizeof symbol);
  float x, y, z;
  const int right = encode(4321, &x, &y, &z) == 0 && decode(x, y, z) == 4321;
  return dlclose(library) == 0 && right ? 0 : 1;
}
