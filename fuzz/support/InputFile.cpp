#include "support/InputFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "inputs/MappedFile.h"
#include "support/Failure.h"
#include "support/Require.h"

namespace {

uint8_t const* gData = nullptr;
size_t gSize = 0;

}  // namespace

namespace quenfuzz {

void setInputFile(uint8_t const* data, size_t size) {
    gData = data;
    gSize = size;
}

char const* setSystemFile(uint8_t const* data, size_t size) {
    static int const file = memfd_create("fuzz", MFD_CLOEXEC);
    static std::string const path = "/proc/self/fd/" + std::to_string(file);
    require(ftruncate(file, static_cast<off_t>(size)) == 0 &&
                    pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
            "the input can be written to a file");
    return path.c_str();
}

}  // namespace quenfuzz

namespace quen::reprocess {

std::shared_ptr<MappedFile const> MappedFile::open(std::string const& /*path*/) {
    if (gSize == 0) {
        throw Failure("is empty");
    }
    auto* const copy = new uint8_t[gSize];
    std::memcpy(copy, gData, gSize);
    return std::shared_ptr<MappedFile const>(new MappedFile(copy, gSize));
}

MappedFile::~MappedFile() {
    delete[] mData;
}

}  // namespace quen::reprocess
