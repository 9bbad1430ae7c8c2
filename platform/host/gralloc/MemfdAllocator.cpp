#include "host/gralloc/MemfdAllocator.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "host/gralloc/BufferDescription.h"
#include "host/gralloc/BufferHandle.h"
#include "host/gralloc/BufferSettings.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::host {

namespace {

constexpr size_t kLongestName = 200;  // of a memfd; the kernel takes a little more

std::atomic<pid_t> gProcess{0};

/** This process's number; the system is asked once, and again by a child. */
uint64_t processNumber() {
    static bool const gAsksInChild =
            pthread_atfork(nullptr, nullptr, [] { gProcess = getpid(); }) == 0;
    pid_t process = gProcess;
    if (process == 0 || !gAsksInChild) {
        gProcess = process = getpid();
    }
    return static_cast<uint64_t>(process);
}

/** Unlike in every process that this one may share buffers with. */
uint64_t nextBufferId() {
    static std::atomic<uint32_t> gLatest{0};
    return processNumber() << 32 | ++gLatest;
}

/** Memory that nobody may shrink under a mapping. -1 when there is none. */
int createMemory(std::string const& name, uint64_t size) {
    int const memory = memfd_create(name.c_str(), MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (memory < 0) {
        return -1;
    }
    if (ftruncate(memory, static_cast<off_t>(size)) != 0 ||
        fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_SEAL) != 0) {
        close(memory);
        return -1;
    }
    return memory;
}

/** A handle that owns its memory; null when there is none. */
hidl_handle createBuffer(std::string const& name, BufferFacts const& facts) {
    hidl_handle result;
    int const memory = createMemory(
            name, facts.reservedSize != 0 ? wholeSize(facts) : facts.extent.sizeInBytes);
    if (memory < 0) {
        return result;
    }
    native_handle_t* const handle = makeBufferHandle(memory, facts);
    if (handle == nullptr) {
        close(memory);
        return result;
    }
    result.setTo(handle, true);
    return result;
}

}  // namespace

MemfdAllocator::Choice* MemfdAllocator::findChoice(PixelFormat format) {
    auto* const found = std::find_if(mChoices.begin(), mChoices.end(),
                                     [&](Choice const& choice) { return choice.format == format; });
    return found == mChoices.end() ? nullptr : found;
}

bool MemfdAllocator::setLayout(PixelFormat format, Layout layout) {
    Choice* const choice = findChoice(format);
    if (choice == nullptr || !isYuv420(layout)) {
        return false;
    }
    choice->layout = layout;
    return true;
}

Return<void> MemfdAllocator::allocate(hidl_vec<uint8_t> const& bufferDescriptor, uint32_t count,
                                      allocate_cb cb) {
    IMapper::BufferDescriptorInfo info;
    Error error = decodeDescription(bufferDescriptor, info) ? checkDescription(info)
                                                            : Error::BAD_DESCRIPTOR;
    if (error == Error::BAD_VALUE) {
        error = Error::BAD_DESCRIPTOR;  // no mapper gave it
    }
    if (error != Error::NONE) {
        cb(error, 0, {});
        return Void();
    }
    Choice const* const choice = findChoice(info.format);
    Layout const layout = choice != nullptr ? choice->layout.load() : *usualLayout(info.format);
    BufferExtent const extent = *extentOf(layout, info.width, info.height);
    std::string const name = std::string(info.name).substr(0, kLongestName);

    std::vector<hidl_handle> handles;
    for (uint32_t i = 0; i < count; ++i) {
        hidl_handle handle =
                createBuffer(name, {nextBufferId(), info.width, info.height, info.format, layout,
                                    info.usage, extent, info.reservedSize});
        if (handle.getNativeHandle() == nullptr) {
            cb(Error::NO_RESOURCES, 0, {});
            return Void();
        }
        handles.push_back(std::move(handle));
    }
    hidl_vec<hidl_handle> buffers;
    buffers.setToExternal(handles.data(), handles.size());
    cb(Error::NONE, extent.rowPixels, buffers);
    return Void();
}

}  // namespace quen::host
