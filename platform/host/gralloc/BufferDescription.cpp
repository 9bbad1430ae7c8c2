#include "host/gralloc/BufferDescription.h"

#include <cstring>
#include <optional>

#include "host/gralloc/BufferLayout.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::host {

namespace {

constexpr uint32_t kMagic = 0x43534451;  // "QDSC"

/** Start of the encoded form; the name's characters follow. */
struct Header {
    uint32_t magic;
    uint32_t width;
    uint32_t height;
    uint32_t layerCount;
    PixelFormat format;
    uint32_t nameLength;
    uint64_t usage;
    uint64_t reservedSize;
};

}  // namespace

Error checkDescription(IMapper::BufferDescriptorInfo const& info) {
    if (info.width == 0 || info.height == 0 || info.layerCount == 0) {
        return Error::BAD_VALUE;
    }
    std::optional<Layout> const layout = usualLayout(info.format);
    if (!layout || info.layerCount > 1 || info.reservedSize > kLargestBuffer) {
        return Error::UNSUPPORTED;
    }
    if (layout == Layout::Blob && info.height != 1) {
        return Error::BAD_VALUE;
    }
    return extentOf(*layout, info.width, info.height) ? Error::NONE : Error::UNSUPPORTED;
}

hidl_vec<uint8_t> encodeDescription(IMapper::BufferDescriptorInfo const& info) {
    Header const header = {kMagic,      info.width,
                           info.height, info.layerCount,
                           info.format, static_cast<uint32_t>(info.name.size()),
                           info.usage,  info.reservedSize};
    hidl_vec<uint8_t> bytes(sizeof(header) + info.name.size());
    memcpy(bytes.data(), &header, sizeof(header));
    memcpy(bytes.data() + sizeof(header), info.name.c_str(), info.name.size());
    return bytes;
}

bool decodeDescription(hidl_vec<uint8_t> const& bytes, IMapper::BufferDescriptorInfo& info) {
    Header header;
    if (bytes.size() < sizeof(header)) {
        return false;
    }
    memcpy(&header, bytes.data(), sizeof(header));
    if (header.magic != kMagic || bytes.size() - sizeof(header) != header.nameLength) {
        return false;
    }
    info.name = hidl_string(reinterpret_cast<char const*>(bytes.data()) + sizeof(header),
                            header.nameLength);
    info.width = header.width;
    info.height = header.height;
    info.layerCount = header.layerCount;
    info.format = header.format;
    info.usage = header.usage;
    info.reservedSize = header.reservedSize;
    return true;
}

}  // namespace quen::host
