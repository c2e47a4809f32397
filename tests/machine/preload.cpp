// Preloaded into a program, makes one of its calls fail, once, from main on.
//
//   FAULT_KIND   memory (allocations), write (what changes files), or read (which then takes 5 s, and
//   succeeds) FAULT_AT     the number of the call, from 1; 0: none. Child processes count anew, from where
//   the fork found them. FAULT_COUNT  a file that gets the number of calls when the program ends in order
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>

extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* old, size_t size);
extern "C" void* __libc_memalign(size_t align, size_t size);

namespace {

enum Kind { kNone, kMemory, kWrite, kRead };
Kind g_kind = kNone;  // none before main and after it
long g_at = 0;
std::atomic<long> g_count = 0;

bool Fails(Kind kind) {
    return g_kind == kind && ++g_count == g_at;
}

// These libraries do not look whether they got what they asked for: their allocations are left out.
constexpr const char* kCareless[] = {"libvorbis", "libogg", "libsndfile", "libFLAC"};
// The C library ends the program where it has to keep a destructor of a thread and has no memory for it.
constexpr const char* kFatal = "__cxa_thread_atexit_impl";

bool MemoryFails(const void* caller) {
    if (g_kind != kMemory) return false;
    Dl_info info;
    if (dladdr(caller, &info) && info.dli_fname) {
        for (const char* name : kCareless)
            if (strstr(info.dli_fname, name)) return false;
        if (info.dli_sname && strcmp(info.dli_sname, kFatal) == 0) return false;
    }
    return Fails(kMemory);
}

template <class Function>
Function* Real(Function* /* of the same name */, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void Report() {
    g_kind = kNone;
    const char* name = getenv("FAULT_COUNT");
    FILE* file = name ? fopen(name, "w") : nullptr;
    if (!file) return;
    fprintf(file, "%ld\n", g_count.load());
    fclose(file);
}

// Where it crashed, for the report.
void Crash(int) {
    g_kind = kNone;
    void* frames[12];
    backtrace_symbols_fd(frames, backtrace(frames, 12), STDERR_FILENO);
    _exit(99);
}

int (*g_main)(int, char**, char**);

int Main(int argc, char** argv, char** environment) {
    const char* kind = getenv("FAULT_KIND");
    const char* at = getenv("FAULT_AT");
    g_at = at ? atol(at) : 0;
    atexit(Report);
    for (const int crash : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT}) signal(crash, Crash);
    if (kind) g_kind = !strcmp(kind, "memory") ? kMemory : !strcmp(kind, "write") ? kWrite : kRead;
    return g_main(argc, argv, environment);
}

}  // namespace

extern "C" int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                                 void (*fini)(), void (*rtld_fini)(), void* stack) {
    g_main = main;
    return Real(__libc_start_main, "__libc_start_main")(Main, argc, argv, init, fini, rtld_fini, stack);
}

#define NO_MEMORY_IF_FAILS \
    if (MemoryFails(__builtin_return_address(0))) return errno = ENOMEM, nullptr
extern "C" void* malloc(size_t size) noexcept {
    NO_MEMORY_IF_FAILS;
    return __libc_malloc(size);
}
extern "C" void* calloc(size_t count, size_t size) noexcept {
    NO_MEMORY_IF_FAILS;
    return __libc_calloc(count, size);
}
extern "C" void* realloc(void* old, size_t size) noexcept {
    NO_MEMORY_IF_FAILS;
    return __libc_realloc(old, size);
}
extern "C" void* aligned_alloc(size_t align, size_t size) noexcept {
    NO_MEMORY_IF_FAILS;
    return __libc_memalign(align, size);
}
extern "C" int posix_memalign(void** block, size_t align, size_t size) noexcept {
    if (MemoryFails(__builtin_return_address(0))) return ENOMEM;
    return (*block = __libc_memalign(align, size)) ? 0 : ENOMEM;
}

// A disk that is full, or broken.
#define WRITING(type, name, parameters, arguments)                       \
    extern "C" type name parameters {                                    \
        if (Fails(kWrite)) return errno = ENOSPC, static_cast<type>(-1); \
        static const auto real = Real(name, #name);                      \
        return real arguments;                                           \
    }
WRITING(ssize_t, write, (int fd, const void* bytes, size_t count), (fd, bytes, count))
WRITING(ssize_t, pwrite, (int fd, const void* bytes, size_t count, off_t at), (fd, bytes, count, at))
WRITING(ssize_t, writev, (int fd, const iovec* parts, int count), (fd, parts, count))
WRITING(int, fsync, (int fd), (fd))
WRITING(int, ftruncate, (int fd, off_t size) noexcept, (fd, size))
WRITING(int, rename, (const char* from, const char* to) noexcept, (from, to))
WRITING(int, renameat2, (int a, const char* from, int b, const char* to, unsigned flags) noexcept,
        (a, from, b, to, flags))
WRITING(int, symlink, (const char* to, const char* name) noexcept, (to, name))
WRITING(int, mkdir, (const char* name, mode_t mode) noexcept, (name, mode))
WRITING(int, mkostemp, (char* name, int flags), (name, flags))
WRITING(int, fchmod, (int fd, mode_t mode) noexcept, (fd, mode))
WRITING(int, fflush, (FILE * file), (file))
WRITING(ssize_t, copy_file_range, (int in, off64_t* at, int out, off64_t* to, size_t count, unsigned flags),
        (in, at, out, to, count, flags))
WRITING(ssize_t, sendfile, (int out, int in, off_t* at, size_t count) noexcept, (out, in, at, count))
extern "C" char* mkdtemp(char* name) noexcept {
    if (Fails(kWrite)) return errno = ENOSPC, nullptr;
    return Real(mkdtemp, "mkdtemp")(name);
}

extern "C" ssize_t pread(int fd, void* bytes, size_t count, off_t at) {
    if (Fails(kRead)) sleep(5);
    static const auto real = Real(pread, "pread");
    return real(fd, bytes, count, at);
}
