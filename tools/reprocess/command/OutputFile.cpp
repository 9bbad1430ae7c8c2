#include "command/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

namespace fs = std::filesystem;

/** Throws a problem with the text of errno. */
[[noreturn]] void throwErrno(char const* problem) {
    throw Failure(std::string(problem) + ": " + std::strerror(errno));
}

/** Writes all bytes, over several calls if necessary. */
void writeAll(int fd, Bytes bytes) {
    while (bytes.size > 0) {
        ssize_t const written = ::write(fd, bytes.data, bytes.size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            throwErrno("cannot be written");
        }
        bytes.data += written;
        bytes.size -= static_cast<size_t>(written);
    }
}

/** A file under a temporary name, removed unless it gets its final name. */
class TemporaryFile {
  public:
    explicit TemporaryFile(fs::path const& target)
        : mName((target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string()),
          mFd(::mkostemp(mName.data(), O_CLOEXEC)) {
        if (mFd < 0) {
            mName.clear();
            throwErrno("cannot be created");
        }
    }

    ~TemporaryFile() {
        if (mFd >= 0) {
            ::close(mFd);
        }
        if (!mName.empty()) {
            ::unlink(mName.c_str());
        }
    }

    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    int fd() const { return mFd; }

    void renameTo(fs::path const& target) {
        mode_t const mask = ::umask(0);
        ::umask(mask);
        if (::fchmod(mFd, 0666 & ~mask) != 0) {
            throwErrno("cannot be given its permissions");
        }
        int const closed = ::close(mFd);
        mFd = -1;
        if (closed != 0) {
            throwErrno("cannot be written");
        }
        if (::rename(mName.c_str(), target.c_str()) != 0) {
            throwErrno("cannot be put in its place");
        }
        mName.clear();
    }

  private:
    std::string mName;
    int mFd;
};

/** Writes to an existing device or pipe. */
void writeToDevice(fs::path const& path, Bytes bytes) {
    int const fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        throwErrno("cannot be opened");
    }
    try {
        writeAll(fd, bytes);
    } catch (...) {
        ::close(fd);
        throw;
    }
    if (::close(fd) != 0) {
        throwErrno("cannot be written");
    }
}

/** Follows links; the file at the end need not exist. */
fs::path followLinks(fs::path path) {
    constexpr int kMostLinks = 40;
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(path, error); ++i) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

}  // namespace

void writeOutputFile(std::string const& path, Bytes bytes) {
    std::error_code error;
    fs::path const target = followLinks(path);
    fs::file_status const status = fs::status(target, error);
    if (fs::is_directory(status)) {
        throw Failure("is a folder", "name a file in it");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        writeToDevice(target, bytes);
        return;
    }
    TemporaryFile file(target);
    writeAll(file.fd(), bytes);
    file.renameTo(target);
}

}  // namespace quen::reprocess
