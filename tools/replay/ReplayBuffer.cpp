#include "ReplayBuffer.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "quenRecorder/BufferRecord.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::replay {
namespace {

/** Bytes in place of a picture that was not recorded: a generator's, seeded with its hash. */
void synthesise(uint8_t* bytes, size_t size, uint64_t hash) {
    uint64_t state = hash | 1;
    for (size_t begin = 0; begin < size; begin += sizeof(state)) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(bytes + begin, &state, std::min(sizeof(state), size - begin));
    }
}

}  // namespace

ReplayBuffer::ReplayBuffer(recording::ImageBuffer const& recorded) {
    if (!recorded.has_buffer()) {
        return;
    }
    auto const bytes = static_cast<size_t>(std::max(recorded.size(), 1));
    recording::Buffer const& buffer = recorded.buffer();
    if (!buffer.has_graphic() || !allocate(buffer.graphic(), bytes)) {
        makeMemory(buffer, bytes);
    }
    if (buffer.has_content()) {
        fill(mHandle, buffer.content());
    }
}

ReplayBuffer::~ReplayBuffer() {
    if (mMemory >= 0) {
        native_handle_close(mHandle);
        native_handle_delete(mHandle);
    }
}

/**
 * Allocates a graphic buffer of a description.
 *
 * @param least bytes that it must have
 * @return false when this platform has none
 */
bool ReplayBuffer::allocate(recording::Graphic const& graphic, size_t least) {
    IMapper::BufferDescriptorInfo info{};
    info.name = "quen-replay";
    info.width = static_cast<uint32_t>(graphic.width());
    info.height = static_cast<uint32_t>(graphic.height());
    info.layerCount = static_cast<uint32_t>(graphic.layers());
    info.format = static_cast<PixelFormat>(graphic.format());
    info.usage = graphic.usage();
    hidl_vec<uint8_t> descriptor;
    auto const described = IMapper::getService()->createDescriptor(
            info, [&](Error, hidl_vec<uint8_t> const& bytes) { descriptor = bytes; });
    auto const allocated = IAllocator::getService()->allocate(
            descriptor, 1, [&](Error error, uint32_t, hidl_vec<hidl_handle> const& buffers) {
                if (error == Error::NONE && buffers.size() == 1) {
                    mGraphic = buffers[0];
                }
            });
    bool const isMade =
            described.isOk() && allocated.isOk() && mGraphic.getNativeHandle() != nullptr;
    struct stat memory = {};
    if (!isMade || ::fstat(mGraphic->data[0], &memory) != 0 ||
        static_cast<size_t>(memory.st_size) < least) {
        mGraphic = nullptr;
        return false;
    }
    mHandle = const_cast<native_handle*>(mGraphic.getNativeHandle());
    return true;
}

/** Makes a handle of the recorded form around new memory. */
void ReplayBuffer::makeMemory(recording::Buffer const& recorded, size_t bytes) {
    auto const descriptors = static_cast<int>(std::max(recorded.descriptors(), 1u));
    mHandle = native_handle_create(descriptors, static_cast<int>(recorded.integers()));
    mMemory = memfd_create("quen-replay", MFD_CLOEXEC);
    if (mHandle == nullptr || mMemory < 0 || ::ftruncate(mMemory, static_cast<off_t>(bytes)) != 0) {
        throw std::runtime_error("there is no memory for a client's buffer");
    }
    std::fill(mHandle->data, mHandle->data + mHandle->numFds + mHandle->numInts, 0);
    mHandle->data[0] = mMemory;
    for (int i = 1; i < descriptors; ++i) {
        mHandle->data[i] = ::dup(mMemory);
        if (mHandle->data[i] < 0) {
            throw std::runtime_error("there are no descriptors for a client's buffer");
        }
    }
}

void fill(native_handle const* handle, recording::Content const& content) {
    recorder::BufferAccess access(handle);
    if (!access.map(SIZE_MAX, true)) {
        return;
    }
    size_t const bytes = std::min<size_t>(access.size(), content.head_size());
    if (content.has_head()) {
        std::memcpy(access.data(), content.head().data(), std::min(bytes, content.head().size()));
    } else {
        synthesise(access.data(), bytes, content.hash());
    }
    std::string const& tail = content.tail();
    if (!tail.empty() && content.size() <= access.size() && tail.size() <= content.size()) {
        std::memcpy(access.data() + content.size() - tail.size(), tail.data(), tail.size());
    }
}

}  // namespace quen::replay
