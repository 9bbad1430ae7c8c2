#include "host/gralloc/StandardMetadata.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string>

#include <gralloctypes/Gralloc4.h>

namespace gralloc4 = android::gralloc4;

using aidl::android::hardware::graphics::common::StandardMetadataType;
using android::status_t;
using android::hardware::hidl_vec;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::host {

namespace {

/** The name a buffer was allocated with: its memory has it, so that it goes wherever that goes. */
std::string nameOf(ImportedBuffer const& buffer) {
    std::string const prefix = "/memfd:";
    std::string const suffix = " (deleted)";
    std::string const link = "/proc/self/fd/" + std::to_string(buffer.memory());
    char target[512];
    ssize_t const length = readlink(link.c_str(), target, sizeof(target));
    std::string const path(target, static_cast<size_t>(std::max<ssize_t>(length, 0)));
    if (path.size() < prefix.size() + suffix.size()) {
        return {};
    }
    return path.substr(prefix.size(), path.size() - prefix.size() - suffix.size());
}

struct Property {
    StandardMetadataType type;
    status_t (*encode)(ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded);
};

constexpr Property kProperties[] = {
        {StandardMetadataType::BUFFER_ID,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeBufferId(buffer.facts().id, encoded);
         }},
        {StandardMetadataType::NAME,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeName(nameOf(buffer), encoded);
         }},
        {StandardMetadataType::WIDTH,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeWidth(buffer.facts().width, encoded);
         }},
        {StandardMetadataType::HEIGHT,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeHeight(buffer.facts().height, encoded);
         }},
        {StandardMetadataType::LAYER_COUNT,
         [](ImportedBuffer const& /*buffer*/, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeLayerCount(1, encoded);
         }},
        {StandardMetadataType::PIXEL_FORMAT_REQUESTED,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodePixelFormatRequested(buffer.facts().format, encoded);
         }},
        {StandardMetadataType::USAGE,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeUsage(buffer.facts().usage, encoded);
         }},
        {StandardMetadataType::ALLOCATION_SIZE,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             return gralloc4::encodeAllocationSize(buffer.facts().extent.sizeInBytes, encoded);
         }},
        {StandardMetadataType::PLANE_LAYOUTS,
         [](ImportedBuffer const& buffer, hidl_vec<uint8_t>* encoded) {
             BufferFacts const& facts = buffer.facts();
             return gralloc4::encodePlaneLayouts(planesOf(facts.layout, facts.width, facts.height),
                                                 encoded);
         }},
};

}  // namespace

Error encodeStandardMetadata(ImportedBuffer const& buffer, IMapper::MetadataType const& type,
                             hidl_vec<uint8_t>& encoded) {
    if (!gralloc4::isStandardMetadataType(type)) {
        return Error::UNSUPPORTED;
    }
    auto const* const found = std::find_if(
            std::begin(kProperties), std::end(kProperties), [&](Property const& property) {
                return static_cast<int64_t>(property.type) == type.value;
            });
    if (found == std::end(kProperties)) {
        return Error::UNSUPPORTED;
    }
    return found->encode(buffer, &encoded) == android::OK ? Error::NONE : Error::NO_RESOURCES;
}

}  // namespace quen::host
