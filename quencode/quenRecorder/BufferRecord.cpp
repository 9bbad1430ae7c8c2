#include "quenRecorder/BufferRecord.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <gralloctypes/Gralloc4.h>

using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using android::status_t;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::recorder {
namespace {

namespace gralloc4 = android::gralloc4;

constexpr uint64_t kCpuReadOften = 3;
constexpr uint64_t kCpuWriteOften = 0x30;

// The trailer of a JPEG, the last bytes of its buffer.
constexpr uint32_t kJpegId = 0xff;
constexpr size_t kTrailerBytes = 8;

// The header of a tuning buffer.
constexpr size_t kTuningHeaderBytes = 64;
constexpr size_t kTuningUsedOffset = 32;
constexpr size_t kLargestTuning = 0x1fa400;

/** Reads a property of an imported buffer; leaves `value` alone when there is none. */
template <typename T>
bool readProperty(IMapper& mapper, void* buffer, IMapper::MetadataType const& type,
                  status_t (*decode)(hidl_vec<uint8_t> const&, T*), T& value) {
    bool isRead = false;
    auto const call = mapper.get(buffer, type, [&](Error error, hidl_vec<uint8_t> const& encoded) {
        isRead = error == Error::NONE && decode(encoded, &value) == android::OK;
    });
    return call.isOk() && isRead;
}

void describePlane(PlaneLayout const& layout, recording::Plane& plane) {
    plane.set_offset(layout.offsetInBytes);
    plane.set_sample_increment_bits(layout.sampleIncrementInBits);
    plane.set_stride(layout.strideInBytes);
    plane.set_width(layout.widthInSamples);
    plane.set_height(layout.heightInSamples);
    plane.set_size(layout.totalSizeInBytes);
    plane.set_horizontal_subsampling(layout.horizontalSubsampling);
    plane.set_vertical_subsampling(layout.verticalSubsampling);
    for (PlaneLayoutComponent const& from : layout.components) {
        recording::Component* const component = plane.add_components();
        component->set_type(from.type.value);
        component->set_offset_bits(from.offsetInBits);
        component->set_size_bits(from.sizeInBits);
    }
}

/** Bytes of the file behind a descriptor; 0 when that is not known. */
size_t fileSize(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && status.st_size > 0
                   ? static_cast<size_t>(status.st_size)
                   : 0;
}

uint32_t load(uint8_t const* bytes) {
    uint32_t value;
    memcpy(&value, bytes, sizeof(value));
    return value;
}

void hashHead(uint8_t const* data, size_t size, bool holdsBytes, recording::Content& content) {
    content.set_head_size(size);
    content.set_hash(XXH64(data, size, 0));
    if (holdsBytes) {
        content.set_head(data, size);
    }
}

}  // namespace

BufferAccess::BufferAccess(native_handle const* handle) : mHandle(handle) {
    if (handle == nullptr) {
        return;
    }
    mMapper = IMapper::getService();
    if (mMapper == nullptr) {
        return;
    }
    auto const call = mMapper->importBuffer(hidl_handle(handle), [&](Error error, void* buffer) {
        mImported = error == Error::NONE ? buffer : nullptr;
    });
    if (!call.isOk()) {
        mImported = nullptr;
    }
}

BufferAccess::~BufferAccess() {
    if (mIsLocked) {
        // The release fence is of no interest: nothing was written, or the writer has ended.
        (void)mMapper->unlock(mImported, [](Error, hidl_handle const&) {}).isOk();
    } else if (mData != nullptr) {
        ::munmap(mData, mSize);
    }
    if (mImported != nullptr) {
        (void)mMapper->freeBuffer(mImported).isOk();
    }
}

bool BufferAccess::describe(recording::Graphic& graphic) const {
    if (mImported == nullptr) {
        return false;
    }
    uint64_t number = 0;
    PixelFormat format = {};
    std::vector<PlaneLayout> planes;
    IMapper& mapper = *mMapper;
    if (readProperty(mapper, mImported, gralloc4::MetadataType_Width, gralloc4::decodeWidth,
                     number)) {
        graphic.set_width(number);
    }
    if (readProperty(mapper, mImported, gralloc4::MetadataType_Height, gralloc4::decodeHeight,
                     number)) {
        graphic.set_height(number);
    }
    if (readProperty(mapper, mImported, gralloc4::MetadataType_PixelFormatRequested,
                     gralloc4::decodePixelFormatRequested, format)) {
        graphic.set_format(static_cast<int32_t>(format));
    }
    if (readProperty(mapper, mImported, gralloc4::MetadataType_Usage, gralloc4::decodeUsage,
                     number)) {
        graphic.set_usage(number);
    }
    if (readProperty(mapper, mImported, gralloc4::MetadataType_LayerCount,
                     gralloc4::decodeLayerCount, number)) {
        graphic.set_layers(number);
    }
    if (readProperty(mapper, mImported, gralloc4::MetadataType_AllocationSize,
                     gralloc4::decodeAllocationSize, number)) {
        graphic.set_allocation_size(number);
    }
    if (readProperty(mapper, mImported, gralloc4::MetadataType_PlaneLayouts,
                     gralloc4::decodePlaneLayouts, planes)) {
        for (PlaneLayout const& plane : planes) {
            describePlane(plane, *graphic.add_planes());
        }
    }
    return true;
}

bool BufferAccess::map(size_t most, bool writable) {
    if (mHandle == nullptr || most == 0) {
        return false;
    }
    uint64_t bytes = 0;
    bool const isKnown = mImported != nullptr &&
                         readProperty(*mMapper, mImported, gralloc4::MetadataType_AllocationSize,
                                      gralloc4::decodeAllocationSize, bytes);
    return (isKnown && lock(bytes, most, writable)) || mapDescriptor(most, writable);
}

bool BufferAccess::lock(uint64_t bytes, size_t most, bool writable) {
    void* address = nullptr;
    IMapper::Rect const everything = {};
    uint64_t const usage = writable ? kCpuReadOften | kCpuWriteOften : kCpuReadOften;
    auto const call = mMapper->lock(
            mImported, usage, everything, hidl_handle(),
            [&](Error error, void* data) { address = error == Error::NONE ? data : nullptr; });
    mIsLocked = call.isOk() && address != nullptr;
    if (mIsLocked) {
        mData = static_cast<uint8_t*>(address);
        mSize = std::min(static_cast<size_t>(bytes), most);
    }
    return mIsLocked;
}

/** As the library maps a client's buffer, but no further than its file goes. */
bool BufferAccess::mapDescriptor(size_t most, bool writable) {
    if (mHandle->numFds < 1) {
        return false;
    }
    int const descriptor = mHandle->data[0];
    size_t const size = std::min(most, fileSize(descriptor));
    if (size == 0) {
        return false;
    }
    void* const address = ::mmap(nullptr, size, writable ? PROT_READ | PROT_WRITE : PROT_READ,
                                 MAP_SHARED, descriptor, 0);
    if (address == MAP_FAILED) {
        return false;
    }
    mData = static_cast<uint8_t*>(address);
    mSize = size;
    return true;
}

bool is3ABuffer(native_handle const* tuning) {
    return tuning != nullptr && tuning->numFds == 1 && tuning->numInts == 2 && tuning->data[0] == 0;
}

void describeHandle(native_handle const* handle, recording::Buffer& buffer) {
    if (handle == nullptr) {
        return;
    }
    buffer.set_descriptors(static_cast<uint32_t>(handle->numFds));
    buffer.set_integers(static_cast<uint32_t>(handle->numInts));
    recording::Graphic graphic;
    if (BufferAccess(handle).describe(graphic)) {
        *buffer.mutable_graphic() = std::move(graphic);
    }
}

void describeContent(uint8_t const* data, size_t size, bool isBlob, bool holdsBytes,
                     recording::Content& content) {
    content.set_size(size);
    uint8_t const* const trailer = data + size - kTrailerBytes;
    if (isBlob && size >= kTrailerBytes && load(trailer) == kJpegId) {
        size_t const jpegBytes = load(trailer + sizeof(uint32_t));
        if (jpegBytes + kTrailerBytes <= size) {
            content.set_tail(trailer, kTrailerBytes);
            hashHead(data, jpegBytes, holdsBytes, content);
            return;
        }
    }
    hashHead(data, size, holdsBytes, content);
}

void describePicture(native_handle const* handle, size_t most, bool isBlob, bool holdsBytes,
                     recording::Content& content) {
    BufferAccess access(handle);
    if (access.map(most, false)) {
        describeContent(access.data(), access.size(), isBlob, holdsBytes, content);
    }
}

void describeTuning(native_handle const* handle, recording::Content& content) {
    BufferAccess access(handle);
    if (!access.map(kLargestTuning, false)) {
        return;
    }
    content.set_size(access.size());
    size_t used = std::min(access.size(), kTuningHeaderBytes);
    if (access.size() >= kTuningHeaderBytes) {
        auto const told = static_cast<int32_t>(load(access.data() + kTuningUsedOffset));
        used = std::clamp(static_cast<size_t>(std::max(told, 0)), used, access.size());
    }
    hashHead(access.data(), used, true, content);
}

}  // namespace quen::recorder
