// Preloaded into a program: lets calls of the C library fail as a system rarely makes them.
//
// STUMBLES names them, as in "linkat=18 write=4@2": every linkat fails with errno 18, the second
// write with errno 4. tmpfile is the open of a file without a name; write=0 writes half of the
// bytes; isatty=0 calls everything a terminal; dlopen=0 finds no library; 134 ends the program as
// abort does. isp=0 has the software ISP take a second and a half more, when it looks whether its
// client waits.

#include <dlfcn.h>
#include <fcntl.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

/** @return the errno that this call fails with; -1: it does not */
int failure(char const* call, int& times) {
    char const* const stumbles = std::getenv("STUMBLES");
    char const* const found = stumbles == nullptr ? nullptr : std::strstr(stumbles, call);
    if (found == nullptr) {
        return -1;
    }
    char* end = nullptr;
    int const error = static_cast<int>(std::strtol(found + std::strlen(call), &end, 10));
    bool const fails =
            *end != '@' || __atomic_add_fetch(&times, 1, __ATOMIC_RELAXED) == std::atoi(end + 1);
    if (fails && error == 128 + SIGABRT) {
        std::abort();
    }
    errno = fails ? error : errno;
    return fails ? error : -1;
}

}  // namespace

// A call by its name: what it gives back where it fails, its parameters, and these as arguments.
#define STUMBLE(name, failed, parameters, arguments)                                             \
    extern "C" long stumble_##name parameters __asm__(#name);                                    \
    extern "C" long stumble_##name parameters {                                                  \
        static int times = 0;                                                                    \
        static auto* const next = reinterpret_cast<long(*) parameters>(dlsym(RTLD_NEXT, #name)); \
        return failure(#name "=", times) >= 0 ? (failed) : next arguments;                       \
    }

STUMBLE(linkat, -1, (int a, char const* b, int c, char const* d, int e), (a, b, c, d, e))
STUMBLE(rename, -1, (char const* from, char const* to), (from, to))
STUMBLE(fchmod, -1, (int fd, unsigned mode), (fd, mode))
STUMBLE(memfd_create, -1, (char const* name, unsigned flags), (name, flags))
STUMBLE(dlopen, 0, (char const* name, int flags), (name, flags))
STUMBLE(isatty, 1, (int fd), (fd))
STUMBLE(read, -1, (int fd, void* bytes, size_t size), (fd, bytes, size))
STUMBLE(write, errno == 0 ? next(fd, bytes, size / 2) : -1,
        (int fd, void const* bytes, size_t size), (fd, bytes, size))
STUMBLE(pthread_create, errno, (void* a, void* b, void* c, void* d), (a, b, c, d))

extern "C" int stumble_open(char const* path, int flags, unsigned mode) __asm__("open");
extern "C" int stumble_open(char const* path, int flags, unsigned mode) {
    static int times = 0;
    using Open = int (*)(char const*, int, ...);
    static auto const next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    constexpr char kTasks[] = "/proc/self/task/";
    if (std::strncmp(path, kTasks, sizeof(kTasks) - 1) == 0 && failure("isp=", times) >= 0) {
        timespec const time = {1, 500000000};
        nanosleep(&time, nullptr);
    }
    bool const isNameless = (flags & O_TMPFILE) == O_TMPFILE;
    return isNameless && failure("tmpfile=", times) >= 0 ? -1 : next(path, flags, mode);
}
