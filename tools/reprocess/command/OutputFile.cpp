#include "command/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "command/StandardStreams.h"
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

/** Closes a descriptor whose errors nobody is told. */
void closeQuietly(int& fd) {
    if (fd >= 0) {
        ::close(std::exchange(fd, -1));
    }
}

/**
 * A file that has no name until it is whole, so that nothing is left of it whatever ends the
 * process. Where the file system knows no such files, it has a temporary name, removed unless it
 * gets its final one.
 */
class TemporaryFile {
  public:
    explicit TemporaryFile(fs::path const& target)
        : mTemporary((target.parent_path() / ("." + target.filename().string() + ".XXXXXX"))
                             .string()) {
        fs::path const folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
        mFd = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
        if (mFd >= 0) {
            return;
        }
        mFd = ::mkostemp(mTemporary.data(), O_CLOEXEC);
        if (mFd < 0) {
            throwErrno("cannot be created");
        }
        mHasName = true;
    }

    ~TemporaryFile() {
        closeQuietly(mFd);
        if (mHasName) {
            ::unlink(mTemporary.c_str());
        }
    }

    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    int fd() const { return mFd; }

    void moveTo(fs::path const& target) {
        if (!mHasName && link(target.string())) {
            closeWhole();
            return;
        }
        if (!mHasName) {
            nameTemporarily();
        } else {
            takeUsualMode();
        }
        closeWhole();
        if (::rename(mTemporary.c_str(), target.c_str()) != 0) {
            throwErrno("cannot be put in its place");
        }
        mHasName = false;
    }

  private:
    /** Names the nameless file. @return false when the name is taken */
    bool link(std::string const& name) {
        std::string const self = "/proc/self/fd/" + std::to_string(mFd);
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return true;
        }
        if (errno != EEXIST) {
            throwErrno("cannot be put in its place");
        }
        return false;
    }

    /** A link cannot take a name from another file; a rename can. */
    void nameTemporarily() {
        std::string const pattern = mTemporary;
        do {
            mTemporary = pattern;
            int fd = ::mkostemp(mTemporary.data(), O_CLOEXEC);
            if (fd < 0) {
                throwErrno("cannot be created");
            }
            closeQuietly(fd);
            ::unlink(mTemporary.c_str());
        } while (!link(mTemporary));
        mHasName = true;
    }

    /** Gives the file the permissions that any new file gets. */
    void takeUsualMode() {
        mode_t const mask = ::umask(0);
        ::umask(mask);
        if (::fchmod(mFd, 0666 & ~mask) != 0) {
            throwErrno("cannot be given its permissions");
        }
    }

    void closeWhole() {
        if (::close(std::exchange(mFd, -1)) != 0) {
            throwErrno("cannot be written");
        }
    }

    std::string mTemporary;
    bool mHasName = false;  // whether there is a file of the temporary name
    int mFd = -1;
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

/** Whether a path leads to a device or a pipe. @throws Failure when it leads to a folder */
bool isDevice(std::string const& path) {
    std::error_code error;
    fs::file_status const status = fs::status(path, error);
    if (fs::is_directory(status)) {
        throw Failure("is a folder", "name a file in it");
    }
    return fs::exists(status) && !fs::is_regular_file(status);
}

}  // namespace

std::string outputTarget(std::string const& path) {
    constexpr int kMostLinks = 40;
    fs::path target = path;
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(target, error); ++i) {
        target = target.parent_path() / fs::read_symlink(target, error);
    }
    return target.string();
}

void writeStandardOutput(Bytes bytes) {
    if (isStandardOutputClosed()) {
        throw Failure("cannot be written: it is closed");
    }
    writeAll(STDOUT_FILENO, bytes);
}

void checkOutputFile(std::string const& path) {
    if (!isDevice(path)) {
        TemporaryFile const unused(outputTarget(path));
    }
}

void writeOutputFile(std::string const& path, Bytes bytes) {
    // A shell's /dev/fd/63 links to "pipe:[...]", which no call but the one that opens it follows.
    if (isDevice(path)) {
        writeToDevice(path, bytes);
        return;
    }
    fs::path const target = outputTarget(path);
    TemporaryFile file(target);
    writeAll(file.fd(), bytes);
    file.moveTo(target);
}

}  // namespace quen::reprocess
