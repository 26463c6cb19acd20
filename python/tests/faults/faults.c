// Makes one call to the system fail: one about a file in a chosen folder, or one for memory. It is
// loaded before the C library (LD_PRELOAD), does nothing until it is armed, and fails once.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#define PUBLIC __attribute__((visibility("default")))

enum { SHORT = -1 };  // what stands for a part of what is asked for among the numbers of errors

static struct {
    pthread_mutex_t lock;
    char folder[PATH_MAX];
    char call[16];   // its name
    long at, count;  // which call of this name fails, from 1, and how many there have been
    int error;
    size_t length;
    char calls[1 << 18];  // a line for each: its name and its file
} files = {.lock = PTHREAD_MUTEX_INITIALIZER};

static atomic_long memory_at = -1, memory_count;  // likewise for memory; -1: none are counted

PUBLIC void faults_in_files(const char* folder, const char* call, long at, int error)
{
    pthread_mutex_lock(&files.lock);
    strncpy(files.folder, folder, sizeof files.folder - 1);
    strncpy(files.call, call, sizeof files.call - 1);
    files.at = at;
    files.error = error;
    files.count = 0;
    files.length = 0;
    pthread_mutex_unlock(&files.lock);
}

PUBLIC const char* faults_seen(void)
{
    return files.calls;
}

PUBLIC void faults_in_memory(long at)
{
    memory_count = 0;
    memory_at = at;
}

PUBLIC long faults_end_in_memory(void)
{
    memory_at = -1;
    return memory_count;
}

static int is_below(const char* path)
{
    const size_t length = strlen(files.folder);
    return length > 0 && strncmp(path, files.folder, length) == 0 && path[length] == '/';
}

// The error of a call about a file, or 0.
static int fault(const char* call, const char* path)
{
    if (!is_below(path)) {
        return 0;
    }
    pthread_mutex_lock(&files.lock);
    const int fails = strcmp(call, files.call) == 0 && ++files.count == files.at;
    const size_t room = sizeof files.calls - files.length;
    const int written = snprintf(files.calls + files.length, room, "%s %s\n", call,
                                 path + strlen(files.folder) + 1);
    files.length += (size_t)written < room ? (size_t)written : 0;
    pthread_mutex_unlock(&files.lock);
    return fails ? files.error : 0;
}

static int fault_of(const char* call, int descriptor)
{
    const int before = errno;
    char link[64], path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = files.folder[0] ? readlink(link, path, sizeof path - 1) : -1;
    errno = before;
    if (length < 0) {
        return 0;
    }
    path[length] = '\0';
    return fault(call, path);
}

static int fault_at(const char* call, int folder, const char* name)
{
    char link[64] = "/proc/self/cwd", path[2 * PATH_MAX];
    if (files.folder[0] == '\0' || name == NULL || name[0] == '/') {
        return name == NULL ? 0 : fault(call, name);
    }
    if (folder != AT_FDCWD) {
        snprintf(link, sizeof link, "/proc/self/fd/%d", folder);
    }
    const ssize_t length = readlink(link, path, PATH_MAX - 1);
    if (length < 0) {
        return 0;
    }
    snprintf(path + length, sizeof path - (size_t)length, "/%s", name);
    return fault(call, path);
}

static long failed(int error)
{
    errno = error;
    return -1;
}

static int opened(int folder, const char* name, int flags, mode_t mode)
{
    const int error = fault_at("open", folder, name);
    return (int)(error ? failed(error) : syscall(SYS_openat, folder, name, flags, mode));
}

#define MODE_OF(flags)                       \
    mode_t mode = 0;                         \
    if ((flags) & (O_CREAT | __O_TMPFILE)) { \
        va_list more;                        \
        va_start(more, flags);               \
        mode = va_arg(more, mode_t);         \
        va_end(more);                        \
    }

PUBLIC int open(const char* name, int flags, ...)
{
    MODE_OF(flags)
    return opened(AT_FDCWD, name, flags, mode);
}

PUBLIC int open64(const char* name, int flags, ...)
{
    MODE_OF(flags)
    return opened(AT_FDCWD, name, flags, mode);
}

PUBLIC int openat(int folder, const char* name, int flags, ...)
{
    MODE_OF(flags)
    return opened(folder, name, flags, mode);
}

PUBLIC int openat64(int folder, const char* name, int flags, ...)
{
    MODE_OF(flags)
    return opened(folder, name, flags, mode);
}

typedef FILE* Opener(const char*, const char*);

static FILE* stream(const char* name, const char* mode, const char* opener)
{
    const int error = fault_at("open", AT_FDCWD, name);
    if (error) {
        errno = error;
        return NULL;
    }
    return ((Opener*)dlsym(RTLD_NEXT, opener))(name, mode);
}

PUBLIC FILE* fopen(const char* name, const char* mode)
{
    return stream(name, mode, "fopen");
}

PUBLIC FILE* fopen64(const char* name, const char* mode)
{
    return stream(name, mode, "fopen64");
}

PUBLIC size_t fwrite(const void* data, size_t size, size_t count, FILE* to)
{
    typedef size_t Writer(const void*, size_t, size_t, FILE*);
    const int error = fault_of("write", fileno(to));
    if (error > 0 && error != EINTR) {
        errno = error;
        return 0;
    }
    return ((Writer*)dlsym(RTLD_NEXT, "fwrite"))(data, size, count, to);
}

PUBLIC int fclose(FILE* file)
{
    typedef int Closer(FILE*);
    const int error = fault_of("close", fileno(file));
    const int closed = ((Closer*)dlsym(RTLD_NEXT, "fclose"))(file);
    return error ? (int)failed(error) : closed;
}

// Half of what is to be read or written, where that is to be less than what is asked for.
static size_t cut(int error, size_t size)
{
    return error == SHORT && size > 1 ? size / 2 : size;
}

PUBLIC ssize_t read(int from, void* data, size_t size)
{
    const int error = fault_of("read", from);
    return error > 0 ? failed(error) : syscall(SYS_read, from, data, cut(error, size));
}

PUBLIC ssize_t pread(int from, void* data, size_t size, off_t at)
{
    const int error = fault_of("read", from);
    return error > 0 ? failed(error) : syscall(SYS_pread64, from, data, cut(error, size), at);
}

PUBLIC ssize_t pread64(int from, void* data, size_t size, off64_t at)
{
    return pread(from, data, size, at);
}

PUBLIC ssize_t write(int to, const void* data, size_t size)
{
    const int error = fault_of("write", to);
    return error > 0 ? failed(error) : syscall(SYS_write, to, data, cut(error, size));
}

PUBLIC ssize_t pwrite(int to, const void* data, size_t size, off_t at)
{
    const int error = fault_of("write", to);
    return error > 0 ? failed(error) : syscall(SYS_pwrite64, to, data, cut(error, size), at);
}

PUBLIC ssize_t pwrite64(int to, const void* data, size_t size, off64_t at)
{
    return pwrite(to, data, size, at);
}

PUBLIC ssize_t writev(int to, const struct iovec* parts, int count)
{
    const int error = fault_of("write", to);
    if (error == SHORT) {
        return syscall(SYS_write, to, parts[0].iov_base, cut(error, parts[0].iov_len));
    }
    return error ? failed(error) : syscall(SYS_writev, to, parts, count);
}

PUBLIC int fsync(int file)
{
    const int error = fault_of("fsync", file);
    return (int)(error ? failed(error) : syscall(SYS_fsync, file));
}

PUBLIC int fdatasync(int file)
{
    const int error = fault_of("fsync", file);
    return (int)(error ? failed(error) : syscall(SYS_fdatasync, file));
}

PUBLIC int ftruncate(int file, off_t length)
{
    const int error = fault_of("ftruncate", file);
    return (int)(error ? failed(error) : syscall(SYS_ftruncate, file, length));
}

PUBLIC int ftruncate64(int file, off64_t length)
{
    return ftruncate(file, length);
}

PUBLIC int renameat2(int from, const char* old, int to, const char* name, unsigned flags)
{
    const int error = fault_at("rename", to, name);
    return (int)(error ? failed(error) : syscall(SYS_renameat2, from, old, to, name, flags));
}

PUBLIC int renameat(int from, const char* old, int to, const char* name)
{
    return renameat2(from, old, to, name, 0);
}

PUBLIC int rename(const char* old, const char* name)
{
    return renameat2(AT_FDCWD, old, AT_FDCWD, name, 0);
}

PUBLIC int linkat(int from, const char* old, int to, const char* name, int flags)
{
    const int error = fault_at("link", to, name);
    return (int)(error ? failed(error) : syscall(SYS_linkat, from, old, to, name, flags));
}

PUBLIC int link(const char* old, const char* name)
{
    return linkat(AT_FDCWD, old, AT_FDCWD, name, 0);
}

PUBLIC int mkdir(const char* name, mode_t mode)
{
    const int error = fault_at("mkdir", AT_FDCWD, name);
    return (int)(error ? failed(error) : syscall(SYS_mkdirat, AT_FDCWD, name, mode));
}

PUBLIC int close(int file)
{
    const int error = fault_of("close", file);
    const long closed = syscall(SYS_close, file);
    return (int)(error ? failed(error) : closed);
}

PUBLIC void* mmap(void* where, size_t length, int protection, int flags, int file, off_t from)
{
    const int error = file < 0 ? 0 : fault_of("mmap", file);
    if (error) {
        errno = error;
        return MAP_FAILED;
    }
    return (void*)syscall(SYS_mmap, where, length, protection, flags, file, from);
}

PUBLIC void* mmap64(void* where, size_t length, int protection, int flags, int file, off64_t from)
{
    return mmap(where, length, protection, flags, file, from);
}

// The names by which glibc gives what the names below hide.
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);

static int is_out_of_memory(void)
{
    const long at = memory_at;
    if (at < 0 || atomic_fetch_add(&memory_count, 1) + 1 != at) {
        return 0;
    }
    errno = ENOMEM;
    return 1;
}

PUBLIC void* malloc(size_t size)
{
    return is_out_of_memory() ? NULL : __libc_malloc(size);
}

PUBLIC void* calloc(size_t count, size_t size)
{
    return is_out_of_memory() ? NULL : __libc_calloc(count, size);
}

PUBLIC void* realloc(void* block, size_t size)
{
    return is_out_of_memory() ? NULL : __libc_realloc(block, size);
}

PUBLIC void* memalign(size_t alignment, size_t size)
{
    return is_out_of_memory() ? NULL : __libc_memalign(alignment, size);
}

PUBLIC void* aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

PUBLIC int posix_memalign(void** block, size_t alignment, size_t size)
{
    void* const found = memalign(alignment, size);
    if (found != NULL) {
        *block = found;
    }
    return found == NULL ? ENOMEM : 0;
}
