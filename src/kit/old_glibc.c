/* What the C++ runtime needs of glibc beyond version 2.17, defined within the library, so that it
   loads on systems from 2014 on. Compiled in for releases only (QUOR_OLD_GLIBC); none of the names
   is exported. The runtime is that of g++ 12, linked statically; scripts/test_release checks what
   the library still needs. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#if !defined(__linux__) || !defined(__LP64__)
#error "for 64-bit Linux, where the kernel's struct stat is that of the C library"
#endif

/* "There may be other threads": reference counts are changed atomically, which is right with one
 * thread too. */
char __libc_single_threaded = 0;

int stat(const char* path, void* status);
int getentropy(void* buffer, size_t length);
uint32_t arc4random(void);
int pthread_once(int* control, void (*routine)(void));
int __pthread_key_create(unsigned int* key, void (*destroy)(void*));

int stat(const char* path, void* status) {
  return (int)syscall(SYS_newfstatat, AT_FDCWD, path, status, 0);
}

/* From the kernel, or where that is older than 3.17 from its device.
   @return 0, or -1 with errno; at most 256 bytes */
int getentropy(void* buffer, size_t length) {
  char* to = (char*)buffer;
  if (syscall(SYS_getrandom, buffer, length, 0) == (long)length) {
    return 0;
  }
  const int device = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (device < 0) {
    return -1;
  }
  while (length > 0) {
    const ssize_t count = read(device, to, length);
    if (count == 0 || (count < 0 && errno != EINTR)) {
      break;
    }
    if (count > 0) {
      to += count;
      length -= (size_t)count;
    }
  }
  close(device);
  return length == 0 ? 0 : -1;
}

uint32_t arc4random(void) {
  uint32_t number = 0;
  if (getentropy(&number, sizeof number) != 0) {
    abort(); /* as the C library does */
  }
  return number;
}

/* Older C libraries have it in a library of its own, which a host need not have loaded.
   Once is: 0 not yet, 1 by some thread just now, 2 done. */
int pthread_once(int* control, void (*routine)(void)) {
  int state = 0;
  if (__atomic_compare_exchange_n(control, &state, 1, 0, __ATOMIC_ACQUIRE, __ATOMIC_ACQUIRE)) {
    routine();
    __atomic_store_n(control, 2, __ATOMIC_RELEASE);
    return 0;
  }
  while (__atomic_load_n(control, __ATOMIC_ACQUIRE) != 2) {
    sched_yield();
  }
  return 0;
}

/* Never called: the runtime takes its address for the sign that there may be threads. */
int __pthread_key_create(unsigned int* key, void (*destroy)(void*)) {
  (void)key;
  (void)destroy;
  return EAGAIN;
}
