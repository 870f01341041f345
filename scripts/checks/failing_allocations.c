// For LD_PRELOAD: the n-th allocation fails, in the process or in one that it forks. What is allocated
// before main and after it does not count.
//
//   SELU_FAIL_AT=3       which allocation, from 1 on; 0 counts alone
//   SELU_FAIL_HOW=rest   all that follow fail, too
//   SELU_FAIL_SPARE=a:b  those of libraries whose file names begin so do not count
//   SELU_FAIL_LOG=FILE   gets the number of allocations when the process ends (of 0) or a line (at 3)
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

void *__libc_malloc(size_t bytes);
void *__libc_calloc(size_t count, size_t bytes);
void *__libc_realloc(void *memory, size_t bytes);
void *__libc_memalign(size_t alignment, size_t bytes);

static long *g_count; // shared with forked processes; null while nothing counts
static long g_at;
static int g_rest;
static char const *g_log, *g_spare;

static void Log(char const *line, size_t length) {
  int const file = (int)syscall(SYS_openat, AT_FDCWD, g_log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (file < 0 || syscall(SYS_write, file, line, length) != (long)length) _exit(125);
  syscall(SYS_close, file);
}

// Whether the code there is of a library that is spared.
static int IsSpared(void const *caller) {
  Dl_info place;
  if (g_spare == NULL || dladdr(caller, &place) == 0 || place.dli_fname == NULL) return 0;
  char const *const slash = strrchr(place.dli_fname, '/'), *const name = slash ? slash + 1 : place.dli_fname;
  for (char const *one = g_spare; *one != 0;) {
    size_t const length = strcspn(one, ":");
    if (length > 0 && strncmp(name, one, length) == 0) return 1;
    one += length + (one[length] == ':');
  }
  return 0;
}

static int FailsFor(void const *caller) {
  if (g_count == NULL || IsSpared(caller)) return 0;
  long const number = __atomic_add_fetch(g_count, 1, __ATOMIC_SEQ_CST);
  if (number == g_at) Log("failed\n", 7);
  int const fails = g_at > 0 && (g_rest ? number >= g_at : number == g_at);
  if (fails) errno = ENOMEM;
  return fails;
}

#define Fails() FailsFor(__builtin_return_address(0))
void *malloc(size_t bytes) { return Fails() ? NULL : __libc_malloc(bytes); }
void *calloc(size_t count, size_t bytes) { return Fails() ? NULL : __libc_calloc(count, bytes); }
void *realloc(void *memory, size_t bytes) { return Fails() ? NULL : __libc_realloc(memory, bytes); }
void *memalign(size_t alignment, size_t bytes) { return Fails() ? NULL : __libc_memalign(alignment, bytes); }
void *aligned_alloc(size_t alignment, size_t bytes) { return Fails() ? NULL : __libc_memalign(alignment, bytes); }
int posix_memalign(void **memory, size_t alignment, size_t bytes) {
  void *const got = Fails() ? NULL : __libc_memalign(alignment, bytes);
  if (got == NULL) return ENOMEM;
  *memory = got;
  return 0;
}

// Those of the C library are asked for by whoever calls it.
char *strdup(char const *text) {
  size_t const bytes = strlen(text) + 1;
  char *const copy = Fails() ? NULL : __libc_malloc(bytes);
  return copy == NULL ? NULL : memcpy(copy, text, bytes);
}
char *strndup(char const *text, size_t most) {
  size_t const bytes = strnlen(text, most);
  char *const copy = Fails() ? NULL : __libc_malloc(bytes + 1);
  if (copy == NULL) return NULL;
  copy[bytes] = 0;
  return memcpy(copy, text, bytes);
}

typedef int Main(int, char **, char **);
static Main *g_main;

static int CountedMain(int argc, char **argv, char **environment) {
  char const *const at = getenv("SELU_FAIL_AT"), *const how = getenv("SELU_FAIL_HOW");
  g_log = getenv("SELU_FAIL_LOG");
  g_spare = getenv("SELU_FAIL_SPARE");
  g_at = at ? atol(at) : 0;
  g_rest = how && strcmp(how, "rest") == 0;
  void *const shared = mmap(NULL, sizeof *g_count, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (at != NULL && g_log != NULL && shared != MAP_FAILED) g_count = shared;
  int const result = g_main(argc, argv, environment);
  char line[32];
  if (g_count != NULL && g_at == 0) Log(line, (size_t)snprintf(line, sizeof line, "%ld\n", *g_count));
  g_count = NULL;
  return result;
}

int __libc_start_main(Main *main, int argc, char **argv, Main *init, void (*fini)(void), void (*end)(void), void *stack) {
  g_main = main;
  __typeof__(&__libc_start_main) const start = (__typeof__(&__libc_start_main))dlsym(RTLD_NEXT, "__libc_start_main");
  return start(CountedMain, argc, argv, init, fini, end, stack);
}
