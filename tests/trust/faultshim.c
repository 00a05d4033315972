/* Preloaded into a program, makes its calls of the file system fail on demand (Linux only):
 *
 *   PAGESTACK_FAULT_CALL   open (that creates), write, close, rename, fsync or ftruncate;
 *                          a close only of what was open for writing
 *   PAGESTACK_FAULT_ERROR  the errno to fail with; 0 makes a write take half of the bytes only
 *   PAGESTACK_FAULT_BELOW  only what concerns this folder and what is below, absolute and without
 * links PAGESTACK_FAULT_FROM   the number of the first such call that fails, from 1
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
#include <sys/uio.h>
#include <unistd.h>

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

#define CREATES(flags) ((flags)&O_CREAT || ((flags)&O_TMPFILE) == O_TMPFILE)

static atomic_long calls;

static int isBelow(const char* path)
{
    const char* folder = getenv("PAGESTACK_FAULT_BELOW");
    const size_t length = folder ? strlen(folder) : 0;
    return length > 0 && strncmp(path, folder, length) == 0
        && (path[length] == '/' || path[length] == '\0');
}

static int isOpenBelow(int file)
{
    char link[64];
    char path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    if (length < 0)
        return 0;
    path[length] = '\0';
    return isBelow(path);
}

static int isNamed(const char* call)
{
    const char* chosen = getenv("PAGESTACK_FAULT_CALL");
    return chosen && strcmp(chosen, call) == 0;
}

/* Counts a call that could fail, and whether it is to fail. */
static int isDue(void)
{
    const char* from = getenv("PAGESTACK_FAULT_FROM");
    const char* count = getenv("PAGESTACK_FAULT_COUNT");
    const long first = from ? atol(from) : 1;
    const long number = atomic_fetch_add(&calls, 1) + 1;
    if (number < first || (number > first && getenv("PAGESTACK_FAULT_ONCE")))
        return 0;
    /* Past the functions below, which would count this as well. */
    const long file
        = count ? syscall(SYS_openat, AT_FDCWD, count, O_WRONLY | O_CREAT | O_APPEND, 0600) : -1;
    if (file >= 0) {
        syscall(SYS_write, file, "x", 1);
        syscall(SYS_close, file);
    }
    return 1;
}

static int chosenError(void)
{
    const char* error = getenv("PAGESTACK_FAULT_ERROR");
    return error ? atoi(error) : EIO;
}

static int isSealed(int flags, const char* path)
{
    if (!CREATES(flags) || !getenv("PAGESTACK_FAULT_SEALED") || !isBelow(path))
        return 0;
    errno = EACCES;
    return 1;
}

/* Evaluates the path only when the call is the one that was chosen. */
#define FAILS(call, isConcerned) (isNamed(call) && (isConcerned) && isDue())

static int fail(void)
{
    errno = chosenError();
    return -1;
}

#define TAKE_MODE(flags)                                                                           \
    mode_t mode = 0;                                                                               \
    if (CREATES(flags)) {                                                                          \
        va_list rest;                                                                              \
        va_start(rest, flags);                                                                     \
        mode = va_arg(rest, mode_t);                                                               \
        va_end(rest);                                                                              \
    }

#define DEFINE_OPEN(name)                                                                          \
    int name(const char* path, int flags, ...)                                                     \
    {                                                                                              \
        TAKE_MODE(flags)                                                                           \
        if (isSealed(flags, path))                                                                 \
            return -1;                                                                             \
        return FAILS("open", CREATES(flags) && isBelow(path)) ? fail()                             \
                                                              : NEXT(name)(path, flags, mode);     \
    }
DEFINE_OPEN(open)
DEFINE_OPEN(open64)

#define DEFINE_OPENAT(name)                                                                        \
    int name(int folder, const char* path, int flags, ...)                                         \
    {                                                                                              \
        TAKE_MODE(flags)                                                                           \
        if (isSealed(flags, path))                                                                 \
            return -1;                                                                             \
        return FAILS("open", CREATES(flags) && isBelow(path))                                      \
            ? fail()                                                                               \
            : NEXT(name)(folder, path, flags, mode);                                               \
    }
DEFINE_OPENAT(openat)
DEFINE_OPENAT(openat64)

/* The bytes that a write may take, or -1 when it fails. */
static ssize_t allowed(int file, size_t size)
{
    if (!FAILS("write", isOpenBelow(file)))
        return (ssize_t)size;
    if (chosenError() == 0)
        return (ssize_t)(size - size / 2);
    return fail();
}

ssize_t write(int file, const void* bytes, size_t size)
{
    const ssize_t taken = allowed(file, size);
    return taken < 0 ? -1 : NEXT(write)(file, bytes, (size_t)taken);
}

#define DEFINE_PWRITE(name, offset_type)                                                           \
    ssize_t name(int file, const void* bytes, size_t size, offset_type offset)                     \
    {                                                                                              \
        const ssize_t taken = allowed(file, size);                                                 \
        return taken < 0 ? -1 : NEXT(name)(file, bytes, (size_t)taken, offset);                    \
    }
DEFINE_PWRITE(pwrite, off_t)
DEFINE_PWRITE(pwrite64, off64_t)

ssize_t writev(int file, const struct iovec* pieces, int count)
{
    if (count < 1 || !FAILS("write", isOpenBelow(file)))
        return NEXT(writev)(file, pieces, count);
    return chosenError() == 0 ? NEXT(writev)(file, pieces, 1) : fail();
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

int renameat(int fromFolder, const char* from, int toFolder, const char* to)
{
    return FAILS("rename", isBelow(to)) ? fail() : NEXT(renameat)(fromFolder, from, toFolder, to);
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

#define DEFINE_ON_FILE(name, call)                                                                 \
    int name(int file) { return FAILS(call, isOpenBelow(file)) ? fail() : NEXT(name)(file); }
DEFINE_ON_FILE(fsync, "fsync")
DEFINE_ON_FILE(fdatasync, "fsync")

#define DEFINE_TRUNCATE(name, size_type)                                                           \
    int name(int file, size_type size)                                                             \
    {                                                                                              \
        return FAILS("ftruncate", isOpenBelow(file)) ? fail() : NEXT(name)(file, size);            \
    }
DEFINE_TRUNCATE(ftruncate, off_t)
DEFINE_TRUNCATE(ftruncate64, off64_t)
