#include "host/gralloc/StandardMetadata.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include "host/base/Mutex.h"
#include "host/gralloc/BufferSettings.h"

namespace gralloc4 = android::gralloc4;

using aidl::android::hardware::graphics::common::BlendMode;
using aidl::android::hardware::graphics::common::Cta861_3;
using aidl::android::hardware::graphics::common::Dataspace;
using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::Rect;
using aidl::android::hardware::graphics::common::Smpte2086;
using aidl::android::hardware::graphics::common::StandardMetadataType;
using android::status_t;
using android::hardware::hidl_vec;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::host {

namespace {

/** Reads the name a buffer was allocated with from its memory, which takes it to every process. */
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

/**
 * What properties are read from: a buffer, or the description of one. Takes from the buffer's
 * memory only what a property asks for.
 */
struct Subject {
    uint64_t width;
    uint64_t height;
    PixelFormat format;
    uint64_t usage;
    ImportedBuffer const* buffer;             // null for a description
    BufferDescriptorInfo const* description;  // null for a buffer
    BufferFacts const* facts;                 // null for a description

    std::string name() const {
        return buffer != nullptr ? nameOf(*buffer) : std::string(description->name);
    }
    BufferSettings settings() const {
        return buffer != nullptr ? readSettings(buffer->memory(), *facts) : BufferSettings{};
    }
};

Subject subjectOf(ImportedBuffer const& buffer) {
    BufferFacts const& facts = buffer.facts();
    return {facts.width, facts.height, facts.format, facts.usage, &buffer, nullptr, &facts};
}

Subject subjectOf(BufferDescriptorInfo const& info) {
    return {info.width, info.height, info.format, info.usage, nullptr, &info, nullptr};
}

/** Codes of the kernel's DRM interface, in the order of Layout; 0 where there is none. */
constexpr char const* kFourCCs[] = {"\0\0\0\0", "\0\0\0\0", "\0\0\0\0", "R16 ", "AB24",
                                    "NV12",     "NV21",     "YU12",     "YV12"};

uint32_t fourCCOf(Layout layout) {
    uint32_t code = 0;
    memcpy(&code, kFourCCs[static_cast<size_t>(layout)], sizeof(code));
    return code;
}

/** Returns the whole area of each plane. */
std::vector<Rect> cropOf(BufferFacts const& facts) {
    std::vector<Rect> areas;
    for (PlaneLayout const& plane : planesOf(facts.layout, facts.width, facts.height)) {
        Rect& area = areas.emplace_back();
        area.right = static_cast<int32_t>(plane.widthInSamples);
        area.bottom = static_cast<int32_t>(plane.heightInSamples);
    }
    return areas;
}

std::optional<Smpte2086> smpte2086Of(BufferSettings const& settings) {
    if (settings.hasSmpte2086 == 0) {
        return std::nullopt;
    }
    float const* const v = settings.smpte2086;
    return Smpte2086{{v[0], v[1]}, {v[2], v[3]}, {v[4], v[5]}, {v[6], v[7]}, v[8], v[9]};
}

std::optional<Cta861_3> cta861Of(BufferSettings const& settings) {
    if (settings.hasCta861_3 == 0) {
        return std::nullopt;
    }
    return Cta861_3{settings.cta861_3[0], settings.cta861_3[1]};
}

bool storeDataspace(hidl_vec<uint8_t> const& encoded, BufferSettings& settings) {
    Dataspace value{};
    bool const reads = gralloc4::decodeDataspace(encoded, &value) == android::OK;
    settings.dataspace = static_cast<int32_t>(value);
    return reads;
}

bool storeBlendMode(hidl_vec<uint8_t> const& encoded, BufferSettings& settings) {
    BlendMode value{};
    bool const reads = gralloc4::decodeBlendMode(encoded, &value) == android::OK;
    settings.blendMode = static_cast<int32_t>(value);
    return reads;
}

bool storeSmpte2086(hidl_vec<uint8_t> const& encoded, BufferSettings& settings) {
    std::optional<Smpte2086> value;
    bool const reads = gralloc4::decodeSmpte2086(encoded, &value) == android::OK;
    settings.hasSmpte2086 = value ? 1 : 0;
    Smpte2086 const display = value.value_or(Smpte2086{});
    float const values[] = {display.primaryRed.x,   display.primaryRed.y,  display.primaryGreen.x,
                            display.primaryGreen.y, display.primaryBlue.x, display.primaryBlue.y,
                            display.whitePoint.x,   display.whitePoint.y,  display.maxLuminance,
                            display.minLuminance};
    std::copy(std::begin(values), std::end(values), settings.smpte2086);
    return reads;
}

bool storeCta861(hidl_vec<uint8_t> const& encoded, BufferSettings& settings) {
    std::optional<Cta861_3> value;
    bool const reads = gralloc4::decodeCta861_3(encoded, &value) == android::OK;
    settings.hasCta861_3 = value ? 1 : 0;
    Cta861_3 const light = value.value_or(Cta861_3{});
    settings.cta861_3[0] = light.maxContentLightLevel;
    settings.cta861_3[1] = light.maxFrameAverageLightLevel;
    return reads;
}

enum class Known { FromTheStart, WithTheAllocation };

struct Property {
    StandardMetadataType type;
    Known known;
    bool isConstant;
    status_t (*encode)(Subject const& subject, hidl_vec<uint8_t>* encoded);
    bool (*store)(hidl_vec<uint8_t> const& encoded,
                  BufferSettings& settings);  // null: not settable
};

using Bytes = hidl_vec<uint8_t>*;
using Type = StandardMetadataType;

constexpr Property kProperties[] = {
        {Type::BUFFER_ID, Known::WithTheAllocation, true,
         [](Subject const& s, Bytes out) { return gralloc4::encodeBufferId(s.facts->id, out); },
         nullptr},
        {Type::NAME, Known::FromTheStart, true,
         [](Subject const& s, Bytes out) { return gralloc4::encodeName(s.name(), out); }, nullptr},
        {Type::WIDTH, Known::FromTheStart, true,
         [](Subject const& s, Bytes out) { return gralloc4::encodeWidth(s.width, out); }, nullptr},
        {Type::HEIGHT, Known::FromTheStart, true,
         [](Subject const& s, Bytes out) { return gralloc4::encodeHeight(s.height, out); },
         nullptr},
        {Type::LAYER_COUNT, Known::FromTheStart, true,
         [](Subject const&, Bytes out) { return gralloc4::encodeLayerCount(1, out); }, nullptr},
        {Type::PIXEL_FORMAT_REQUESTED, Known::FromTheStart, true,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodePixelFormatRequested(s.format, out);
         },
         nullptr},
        {Type::PIXEL_FORMAT_FOURCC, Known::WithTheAllocation, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodePixelFormatFourCC(fourCCOf(s.facts->layout), out);
         },
         nullptr},
        {Type::PIXEL_FORMAT_MODIFIER, Known::WithTheAllocation, false,
         [](Subject const&, Bytes out) { return gralloc4::encodePixelFormatModifier(0, out); },
         nullptr},
        {Type::USAGE, Known::FromTheStart, true,
         [](Subject const& s, Bytes out) { return gralloc4::encodeUsage(s.usage, out); }, nullptr},
        {Type::ALLOCATION_SIZE, Known::WithTheAllocation, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodeAllocationSize(s.facts->extent.sizeInBytes, out);
         },
         nullptr},
        {Type::PROTECTED_CONTENT, Known::FromTheStart, false,
         [](Subject const&, Bytes out) { return gralloc4::encodeProtectedContent(0, out); },
         nullptr},
        {Type::COMPRESSION, Known::FromTheStart, false,
         [](Subject const&, Bytes out) {
             return gralloc4::encodeCompression(gralloc4::Compression_None, out);
         },
         nullptr},
        {Type::INTERLACED, Known::FromTheStart, false,
         [](Subject const&, Bytes out) {
             return gralloc4::encodeInterlaced(gralloc4::Interlaced_None, out);
         },
         nullptr},
        {Type::CHROMA_SITING, Known::WithTheAllocation, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodeChromaSiting(isYuv420(s.facts->layout)
                                                         ? gralloc4::ChromaSiting_SitedInterstitial
                                                         : gralloc4::ChromaSiting_None,
                                                 out);
         },
         nullptr},
        {Type::PLANE_LAYOUTS, Known::WithTheAllocation, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodePlaneLayouts(
                     planesOf(s.facts->layout, s.facts->width, s.facts->height), out);
         },
         nullptr},
        {Type::CROP, Known::WithTheAllocation, false,
         [](Subject const& s, Bytes out) { return gralloc4::encodeCrop(cropOf(*s.facts), out); },
         nullptr},
        {Type::DATASPACE, Known::FromTheStart, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodeDataspace(static_cast<Dataspace>(s.settings().dataspace), out);
         },
         storeDataspace},
        {Type::BLEND_MODE, Known::FromTheStart, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodeBlendMode(static_cast<BlendMode>(s.settings().blendMode), out);
         },
         storeBlendMode},
        {Type::SMPTE2086, Known::FromTheStart, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodeSmpte2086(smpte2086Of(s.settings()), out);
         },
         storeSmpte2086},
        {Type::CTA861_3, Known::FromTheStart, false,
         [](Subject const& s, Bytes out) {
             return gralloc4::encodeCta861_3(cta861Of(s.settings()), out);
         },
         storeCta861},
};

/** Returns null for an unknown property, SMPTE2094_40 among them. */
Property const* findProperty(BufferMetadataType const& type) {
    if (!gralloc4::isStandardMetadataType(type)) {
        return nullptr;
    }
    auto const* const found = std::find_if(
            std::begin(kProperties), std::end(kProperties), [&](Property const& property) {
                return static_cast<int64_t>(property.type) == type.value;
            });
    return found == std::end(kProperties) ? nullptr : found;
}

MapperError encode(Property const& property, Subject const& subject, hidl_vec<uint8_t>& encoded) {
    return property.encode(subject, &encoded) == android::OK ? MapperError::NONE
                                                             : MapperError::NO_RESOURCES;
}

Mutex gSettingsLock;  // held from the reading of a buffer's settings to their writing

/** Changes one setting; the settings of a buffer are written all together. */
MapperError changeSettingLocked(ImportedBuffer const& buffer, Property const& property,
                                hidl_vec<uint8_t> const& encoded) HOST_REQUIRES(gSettingsLock) {
    BufferSettings settings = readSettings(buffer.memory(), buffer.facts());
    if (!property.store(encoded, settings)) {
        return MapperError::UNSUPPORTED;
    }
    return writeSettings(buffer.memory(), buffer.facts(), settings) ? MapperError::NONE
                                                                    : MapperError::NO_RESOURCES;
}

}  // namespace

MapperError encodeStandardMetadata(ImportedBuffer const& buffer, BufferMetadataType const& type,
                                   hidl_vec<uint8_t>& encoded) {
    Property const* const property = findProperty(type);
    return property == nullptr ? MapperError::UNSUPPORTED
                               : encode(*property, subjectOf(buffer), encoded);
}

MapperError encodeStandardMetadata(BufferDescriptorInfo const& info, BufferMetadataType const& type,
                                   hidl_vec<uint8_t>& encoded) {
    Property const* const property = findProperty(type);
    if (property == nullptr || property->known == Known::WithTheAllocation) {
        return MapperError::UNSUPPORTED;
    }
    return encode(*property, subjectOf(info), encoded);
}

MapperError setStandardMetadata(ImportedBuffer const& buffer, BufferMetadataType const& type,
                                hidl_vec<uint8_t> const& encoded) {
    Property const* const property = findProperty(type);
    if (property != nullptr && property->isConstant) {
        return MapperError::BAD_VALUE;
    }
    if (property == nullptr || property->store == nullptr) {
        return MapperError::UNSUPPORTED;
    }
    MutexLock const lock(gSettingsLock);
    return changeSettingLocked(buffer, *property, encoded);
}

hidl_vec<IMapper::MetadataTypeDescription> listStandardMetadata() {
    hidl_vec<IMapper::MetadataTypeDescription> list(std::size(kProperties));
    for (size_t i = 0; i < list.size(); ++i) {
        list[i].metadataType = gralloc4::details::standardType(kProperties[i].type);
        list[i].isGettable = true;
        list[i].isSettable = kProperties[i].store != nullptr;
    }
    return list;
}

IMapper::BufferDump dumpStandardMetadata(ImportedBuffer const& buffer) {
    Subject const subject = subjectOf(buffer);
    IMapper::BufferDump dump;
    dump.metadataDump.resize(std::size(kProperties));
    for (size_t i = 0; i < std::size(kProperties); ++i) {
        IMapper::MetadataDump& line = dump.metadataDump[i];
        line.metadataType = gralloc4::details::standardType(kProperties[i].type);
        static_cast<void>(encode(kProperties[i], subject, line.metadata));
    }
    return dump;
}

}  // namespace quen::host
