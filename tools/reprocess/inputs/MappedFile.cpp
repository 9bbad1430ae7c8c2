#include "inputs/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

/** Closes a descriptor at the end of the scope. */
struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
};

}  // namespace

std::shared_ptr<MappedFile const> MappedFile::open(std::string const& path) {
    // Non-blocking: opening a pipe without a writer would block.
    Descriptor const file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (file.fd < 0) {
        throw Failure(std::string("cannot be opened: ") + std::strerror(errno));
    }
    struct stat status;
    if (::fstat(file.fd, &status) != 0) {
        throw Failure(std::string("cannot be examined: ") + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure("is not a regular file", "name the picture itself");
    }
    if (status.st_size == 0) {
        throw Failure("is empty");
    }
    size_t const size = static_cast<size_t>(status.st_size);
    void* const data = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.fd, 0);
    if (data == MAP_FAILED) {
        throw Failure(std::string("cannot be mapped: ") + std::strerror(errno));
    }
    return std::shared_ptr<MappedFile const>(
            new MappedFile(static_cast<uint8_t const*>(data), size));
}

MappedFile::~MappedFile() {
    ::munmap(const_cast<uint8_t*>(mData), mSize);
}

}  // namespace quen::reprocess
