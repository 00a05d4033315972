/* Preloaded into a program, makes its calls of the file system fail on demand (Linux only):
 *
 *   PAGESTACK_FAULT_CALL   open (that creates), write, close, rename, fsync or ftruncate;
 *                          a close only of what was open for writing
 *   PAGESTACK_FAULT_ERROR  the errno to fail with; 0 makes a write take half of the bytes only, -1 turns
 *                          a bit of the byte in the middle over, and the write succeeds
 *   PAGESTACK_FAULT_BELOW  only what is below this folder, absolute and without links
 *   PAGESTACK_FAULT_FROM   the number of the first such call that fails, from 1
 *   PAGESTACK_FAULT_ONCE   when set, only that call fails; else all from there on
 *   PAGESTACK_FAULT_COUNT  a file that gets one byte for each call that failed
 *   PAGESTACK_FAULT_SEALED when set, no file can be created below the folder, which is not counted
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static atomic_long calls;

static const char* option(const char* name, const char* fallback)
{
    const char* value = getenv(name);
    return value ? value : fallback;
}

static int isBelow(const char* path)
{
    const char* folder = option("PAGESTACK_FAULT_BELOW", "");
    const size_t length = strlen(folder);
    return length > 0 && strncmp(path, folder, length) == 0
        && (path[length] == '/' || path[length] == '\0');
}

static int isOpenBelow(int file)
{
    char link[64];
    char path[PATH_MAX] = "";
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    return readlink(link, path, sizeof path - 1) > 0 && isBelow(path);
}

/* Counts a call that could fail, and whether it is to fail. */
static int isDue(void)
{
    const long first = atol(option("PAGESTACK_FAULT_FROM", "1"));
    const long number = atomic_fetch_add(&calls, 1) + 1;
    if (number < first || (number > first && getenv("PAGESTACK_FAULT_ONCE")))
        return 0;
    /* Past the functions below, which would count this as well. */
    const char* count = option("PAGESTACK_FAULT_COUNT", "/dev/null");
    const long file = syscall(SYS_openat, AT_FDCWD, count, O_WRONLY | O_APPEND);
    syscall(SYS_write, file, "x", 1);
    syscall(SYS_close, file);
    return 1;
}

static int fail(void)
{
    errno = atoi(option("PAGESTACK_FAULT_ERROR", "5"));
    return -1;
}

/* Evaluates the path only when the call is the one that was chosen. */
#define FAILS(call, isConcerned)                                                                   \
    (strcmp(option("PAGESTACK_FAULT_CALL", ""), call) == 0 && (isConcerned) && isDue())

int open(const char* path, int flags, ...)
{
    mode_t mode = 0;
    const int creates = flags & O_CREAT || (flags & O_TMPFILE) == O_TMPFILE;
    if (creates) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
        if (getenv("PAGESTACK_FAULT_SEALED") && isBelow(path)) {
            errno = EACCES;
            return -1;
        }
    }
    return FAILS("open", creates && isBelow(path)) ? fail() : NEXT(open)(path, flags, mode);
}

/* The bytes that a write may take, or -1 when it fails. `bytes` may become others, to be freed. */
static ssize_t allowed(int file, const void** bytes, char** freed, size_t size)
{
    if (!FAILS("write", isOpenBelow(file)))
        return (ssize_t)size;
    fail();
    if (errno == -1 && size > 0 && (*freed = malloc(size))) {
        memcpy(*freed, *bytes, size);
        (*freed)[size / 2] ^= 1;
        *bytes = *freed;
        return (ssize_t)size;
    }
    return errno ? -1 : (ssize_t)(size - size / 2);
}

ssize_t write(int file, const void* bytes, size_t size)
{
    char* freed = NULL;
    const ssize_t taken = allowed(file, &bytes, &freed, size);
    const ssize_t result = taken < 0 ? -1 : NEXT(write)(file, bytes, (size_t)taken);
    free(freed);
    return result;
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset)
{
    char* freed = NULL;
    const ssize_t taken = allowed(file, &bytes, &freed, size);
    const ssize_t result = taken < 0 ? -1 : NEXT(pwrite)(file, bytes, (size_t)taken, offset);
    free(freed);
    return result;
}

int close(int file)
{
    const int isForWriting = (fcntl(file, F_GETFL) & O_ACCMODE) != O_RDONLY;
    const int fails = FAILS("close", isForWriting && isOpenBelow(file));
    /* It is closed all the same, as the kernel does it. */
    const int result = NEXT(close)(file);
    return fails ? fail() : result;
}

int rename(const char* from, const char* to)
{
    return FAILS("rename", isBelow(to)) ? fail() : NEXT(rename)(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags)
{
    return FAILS("rename", isBelow(to)) ? fail()
                                        : NEXT(renameat2)(fromFolder, from, toFolder, to, flags);
}

/* What gives a file without a name its name. */
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags)
{
    return FAILS("rename", isBelow(to)) ? fail()
                                        : NEXT(linkat)(fromFolder, from, toFolder, to, flags);
}

int fsync(int file) { return FAILS("fsync", isOpenBelow(file)) ? fail() : NEXT(fsync)(file); }

int ftruncate(int file, off_t size)
{
    return FAILS("ftruncate", isOpenBelow(file)) ? fail() : NEXT(ftruncate)(file, size);
}

/* off_t has 64 bits. */
int open64(const char* path, int flags, ...) __attribute__((alias("open")));
ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset)
    __attribute__((alias("pwrite")));
int ftruncate64(int file, off64_t size) __attribute__((alias("ftruncate")));
