#include "inputs/StandardInput.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

// No request carries a larger picture.
constexpr size_t kMostBytes = size_t{1} << 31;
constexpr size_t kPieceBytes = size_t{1} << 20;

[[noreturn]] void throwErrno(char const* problem) {
    throw Failure(std::string("standard input ") + problem + ": " + std::strerror(errno));
}

/** Writes a piece to the copy. */
void append(int copy, char const* bytes, size_t size) {
    while (size > 0) {
        ssize_t const written = ::write(copy, bytes, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            throwErrno("cannot be kept in memory");
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
}

/** Copies all of standard input. */
void copyTo(int copy) {
    auto const piece = std::make_unique<char[]>(kPieceBytes);
    for (size_t all = 0;;) {
        ssize_t const count = ::read(STDIN_FILENO, piece.get(), kPieceBytes);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throwErrno("cannot be read");
        }
        if (count == 0) {
            return;
        }
        all += static_cast<size_t>(count);
        if (all > kMostBytes) {
            throw Failure("standard input does not end within 2 GiB", "name a file");
        }
        append(copy, piece.get(), static_cast<size_t>(count));
    }
}

/** The path of a copy in memory, which lasts until the process ends. */
std::string makeCopy() {
    if (::isatty(STDIN_FILENO) == 1) {
        throw Failure("standard input is a terminal", "pipe a picture into it");
    }
    int const copy = ::memfd_create("standard input", MFD_CLOEXEC);
    if (copy < 0) {
        throwErrno("cannot be kept in memory");
    }
    copyTo(copy);
    return "/proc/self/fd/" + std::to_string(copy);
}

}  // namespace

std::string readablePath(std::string const& input) {
    if (input != kStandardInput) {
        return input;
    }
    static std::string const path = makeCopy();
    return path;
}

}  // namespace quen::reprocess
