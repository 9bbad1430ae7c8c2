#include "host/gralloc/BufferHandle.h"

#include <cstddef>
#include <cstring>

#include "host/gralloc/BufferSettings.h"

using android::hardware::graphics::common::V1_2::PixelFormat;

namespace quen::host {

namespace {

constexpr uint32_t kMagic = 0x46554251;  // "QBUF"
constexpr int kFds = 1;

/** The integers of a handle. */
struct Integers {
    uint32_t magic;
    Layout layout;
    PixelFormat format;
    uint32_t width;
    uint32_t height;
    uint32_t stride;  // pixels
    uint32_t id[2];   // low, high
    uint32_t usage[2];
    uint32_t size[2];
    uint32_t reserved[2];
};

constexpr int kInts = sizeof(Integers) / sizeof(int);
static_assert(kInts == 14 && alignof(Integers) == alignof(int), "integers only");

void split(uint64_t value, uint32_t (&halves)[2]) {
    halves[0] = static_cast<uint32_t>(value);
    halves[1] = static_cast<uint32_t>(value >> 32);
}

uint64_t join(uint32_t const (&halves)[2]) {
    return uint64_t{halves[1]} << 32 | halves[0];
}

/** Returns the extent that the integers state; none when they contradict each other. */
std::optional<BufferExtent> soundExtentOf(Integers const& integers) {
    if (integers.magic != kMagic || integers.layout < Layout::Blob ||
        integers.layout > Layout::Yv12) {
        return std::nullopt;
    }
    std::optional<BufferExtent> const extent =
            extentOf(integers.layout, integers.width, integers.height);
    bool const isSound = extent && extent->rowPixels == integers.stride &&
                         extent->sizeInBytes == join(integers.size);
    return isSound ? extent : std::nullopt;
}

/** Checks the size of the memory. Without reserved bytes, the settings add to it when first set. */
bool isMemoryOf(MemoryIdentity const& memory, BufferFacts const& facts) {
    return memory.bytes == wholeSize(facts) ||
           (facts.reservedSize == 0 && memory.bytes == facts.extent.sizeInBytes);
}

}  // namespace

native_handle_t* makeBufferHandle(int memory, BufferFacts const& facts) {
    native_handle_t* const handle = native_handle_create(kFds, kInts);
    if (handle == nullptr) {
        return nullptr;
    }
    Integers integers = {};
    integers.magic = kMagic;
    integers.layout = facts.layout;
    integers.format = facts.format;
    integers.width = facts.width;
    integers.height = facts.height;
    integers.stride = facts.extent.rowPixels;
    split(facts.id, integers.id);
    split(facts.usage, integers.usage);
    split(facts.extent.sizeInBytes, integers.size);
    split(facts.reservedSize, integers.reserved);
    handle->data[0] = memory;
    memcpy(&handle->data[kFds], &integers, sizeof(integers));
    return handle;
}

std::optional<BufferDetails> readBufferHandle(native_handle_t const* handle) {
    if (handle == nullptr || handle->version != static_cast<int>(sizeof(native_handle_t)) ||
        handle->numFds != kFds || handle->numInts != kInts) {
        return std::nullopt;
    }
    Integers integers;
    memcpy(&integers, &handle->data[kFds], sizeof(integers));
    std::optional<BufferExtent> const extent = soundExtentOf(integers);
    if (!extent || join(integers.reserved) > kLargestBuffer) {
        return std::nullopt;
    }
    BufferFacts const facts = {join(integers.id), integers.width,         integers.height,
                               integers.format,   integers.layout,        join(integers.usage),
                               *extent,           join(integers.reserved)};
    std::optional<MemoryIdentity> const memory = MemoryIdentity::of(handle->data[0]);
    if (!memory || !isMemoryOf(*memory, facts)) {
        return std::nullopt;
    }
    return BufferDetails{facts, *memory};
}

}  // namespace quen::host
