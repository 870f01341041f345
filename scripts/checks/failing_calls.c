// For LD_PRELOAD: the n-th call that changes files fails, in the process or in one that it forks.
//
//   SELU_FAIL_AT=3       which call, from 1 on; 0 counts alone
//   SELU_FAIL_HOW=28     an error number; or short (half is written), kill (before), killed (after)
//   SELU_FAIL_LOG=FILE   gets the name of the call that failed, or with 0 a line for each call
//
// Calls are those that open a file for writing, write to it, sync, truncate, link, rename or close it.
// Standard error and what is no regular file do not count.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

enum { OWN = 1024, NONE = 0, FAIL, SHORT, KILLED };
static int *g_count; // shared with forked processes
static int g_at, g_error, g_half, g_kill, g_killed;
static char const *g_log;
static unsigned char g_written[OWN]; // by descriptor: whether its close may report a lost write

__attribute__((constructor)) static void Begin(void) {
  g_count = mmap(NULL, sizeof *g_count, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  char const *const at = getenv("SELU_FAIL_AT"), *const how = getenv("SELU_FAIL_HOW");
  g_log = getenv("SELU_FAIL_LOG");
  g_at = at ? atoi(at) : -1;
  g_half = how && strcmp(how, "short") == 0;
  g_kill = how && strcmp(how, "kill") == 0;
  g_killed = how && strcmp(how, "killed") == 0;
  g_error = how ? atoi(how) : 0;
}

static void Log(char const *name) {
  int const file = (int)syscall(SYS_openat, AT_FDCWD, g_log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  char line[32];
  int const length = snprintf(line, sizeof line, "%s\n", name);
  if (file < 0 || syscall(SYS_write, file, line, length) != length) abort();
  syscall(SYS_close, file);
}

// Counts a call; says what is to become of it.
static int Count(char const *name) {
  if (g_at < 0 || g_count == NULL) return NONE;
  int const number = __atomic_add_fetch(g_count, 1, __ATOMIC_SEQ_CST);
  if (g_at == 0 || number == g_at) Log(name);
  if (number != g_at) return NONE;
  if (g_kill) syscall(SYS_kill, getpid(), SIGKILL);
  if (g_killed) return KILLED;
  if (g_half) return SHORT;
  errno = g_error;
  return FAIL;
}

static void *Real(char const *name) {
  void *const function = dlsym(RTLD_NEXT, name);
  if (function == NULL) abort();
  return function;
}
#define REAL(name) ((__typeof__(&name))Real(#name))

static int IsFile(int file) {
  struct stat status;
  int const before = errno;
  int const is = file >= 0 && file != STDERR_FILENO && fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  errno = before;
  return is;
}
static int IsOwn(int file) { return file >= 0 && file < OWN; }
static int IsDevice(char const *path) { return strncmp(path, "/dev/", 5) == 0 || strncmp(path, "/proc/", 6) == 0; }

// The body of a call: CONDITION says whether it counts, BAD is what a failure gives.
#define WITH_FAULT(type, condition, name, bad, call)  \
  int const fault = (condition) ? Count(name) : NONE; \
  if (fault == FAIL) return bad;                      \
  type const result = call;                           \
  if (fault == KILLED) syscall(SYS_kill, getpid(), SIGKILL); \
  return result

static size_t Part(int fault, size_t count) { return fault == SHORT && count > 1 ? count / 2 : count; }

#define WRITE(name, parameters, call)                             \
  ssize_t name parameters {                                       \
    int const fault = IsFile(file) ? Count("write") : NONE;       \
    if (IsOwn(file)) g_written[file] = 1;                         \
    if (fault == FAIL) return -1;                                 \
    ssize_t const result = call;                                  \
    if (fault == KILLED) syscall(SYS_kill, getpid(), SIGKILL);    \
    return result;                                                \
  }
WRITE(write, (int file, void const *data, size_t count), REAL(write)(file, data, Part(fault, count)))
WRITE(pwrite, (int file, void const *data, size_t count, off_t at), REAL(pwrite)(file, data, Part(fault, count), at))
WRITE(pwrite64, (int file, void const *data, size_t count, off64_t at),
      REAL(pwrite64)(file, data, Part(fault, count), at))
WRITE(writev, (int file, struct iovec const *parts, int count),
      fault == SHORT ? REAL(write)(file, parts->iov_base, Part(fault, parts->iov_len))
                     : REAL(writev)(file, parts, count))

size_t fwrite(void const *data, size_t size, size_t count, FILE *stream) {
  int const file = fileno(stream), fault = IsFile(file) ? Count("fwrite") : NONE;
  if (IsOwn(file)) g_written[file] = 1;
  if (fault == FAIL) return 0;
  size_t const result = REAL(fwrite)(data, size, Part(fault, count), stream);
  if (fault == KILLED) syscall(SYS_kill, getpid(), SIGKILL);
  return result;
}

int fsync(int file) { WITH_FAULT(int, 1, "fsync", -1, REAL(fsync)(file)); }
int fdatasync(int file) { WITH_FAULT(int, 1, "fdatasync", -1, REAL(fdatasync)(file)); }
int ftruncate(int file, off_t size) { WITH_FAULT(int, 1, "ftruncate", -1, REAL(ftruncate)(file, size)); }
int ftruncate64(int file, off64_t size) { WITH_FAULT(int, 1, "ftruncate", -1, REAL(ftruncate64)(file, size)); }
int rename(char const *from, char const *to) { WITH_FAULT(int, 1, "rename", -1, REAL(rename)(from, to)); }
int renameat(int a, char const *from, int b, char const *to) {
  WITH_FAULT(int, 1, "rename", -1, REAL(renameat)(a, from, b, to));
}
int link(char const *from, char const *to) { WITH_FAULT(int, 1, "link", -1, REAL(link)(from, to)); }
int chmod(char const *path, mode_t mode) { WITH_FAULT(int, 1, "chmod", -1, REAL(chmod)(path, mode)); }

// A close that fails has closed all the same.
static int CountClose(int file) {
  int const counts = IsOwn(file) && g_written[file] && IsFile(file);
  if (IsOwn(file)) g_written[file] = 0;
  return counts ? Count("close") : NONE;
}
int close(int file) {
  int const fault = CountClose(file);
  int const result = REAL(close)(file);
  if (fault == KILLED) syscall(SYS_kill, getpid(), SIGKILL);
  if (fault != FAIL) return result;
  errno = g_error;
  return -1;
}
int fclose(FILE *stream) {
  int const fault = CountClose(fileno(stream));
  int const result = REAL(fclose)(stream);
  if (fault == KILLED) syscall(SYS_kill, getpid(), SIGKILL);
  if (fault != FAIL) return result;
  errno = g_error;
  return EOF;
}

static int Opens(char const *path, int flags) { return (flags & O_ACCMODE) != O_RDONLY && !IsDevice(path); }
#define OPEN(name, before, path_and_flags, ...)                          \
  int name before {                                                      \
    va_list more;                                                        \
    va_start(more, flags);                                               \
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(more, mode_t) : 0; \
    va_end(more);                                                        \
    WITH_FAULT(int, Opens path_and_flags, "open", -1, REAL(name)(__VA_ARGS__, mode)); \
  }
OPEN(open, (char const *path, int flags, ...), (path, flags), path, flags)
OPEN(open64, (char const *path, int flags, ...), (path, flags), path, flags)
OPEN(openat, (int folder, char const *path, int flags, ...), (path, flags), folder, path, flags)
OPEN(openat64, (int folder, char const *path, int flags, ...), (path, flags), folder, path, flags)
FILE *fopen(char const *path, char const *how) {
  WITH_FAULT(FILE *, strpbrk(how, "wa+") && !IsDevice(path), "open", NULL, REAL(fopen)(path, how));
}
FILE *fopen64(char const *path, char const *how) {
  WITH_FAULT(FILE *, strpbrk(how, "wa+") && !IsDevice(path), "open", NULL, REAL(fopen64)(path, how));
}
