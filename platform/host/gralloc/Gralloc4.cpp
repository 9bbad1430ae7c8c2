#include <gralloctypes/Gralloc4.h>

#include <cstring>
#include <type_traits>
#include <utility>

using aidl::android::hardware::graphics::common::BlendMode;
using aidl::android::hardware::graphics::common::Cta861_3;
using aidl::android::hardware::graphics::common::Dataspace;
using aidl::android::hardware::graphics::common::ExtendableType;
using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using aidl::android::hardware::graphics::common::Rect;
using aidl::android::hardware::graphics::common::Smpte2086;
using aidl::android::hardware::graphics::common::XyColor;
using android::hardware::hidl_vec;
using android::hardware::graphics::common::V1_2::PixelFormat;
using MetadataType = android::hardware::graphics::mapper::V4_0::IMapper::MetadataType;

namespace android::gralloc4 {

namespace {

constexpr size_t kUsualBytes = 512;  // nearly what the plane layouts of a picture take

/** Encodes a property as bytes. */
class Encoder {
  public:
    Encoder() { mBytes.reserve(kUsualBytes); }

    template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>>>
    void put(T value) {
        append(&value, sizeof(value));
    }
    void put(std::string const& text) { putText(text.data(), text.size()); }
    void put(MetadataType const& type) {
        putText(type.name.c_str(), type.name.size());
        put(type.value);
    }
    void put(ExtendableType const& type) {
        put(type.name);
        put(type.value);
    }
    void put(PlaneLayoutComponent const& component) {
        put(component.type);
        put(component.offsetInBits);
        put(component.sizeInBits);
    }
    void put(PlaneLayout const& plane) {
        put(plane.components);
        put(plane.offsetInBytes);
        put(plane.sampleIncrementInBits);
        put(plane.strideInBytes);
        put(plane.widthInSamples);
        put(plane.heightInSamples);
        put(plane.totalSizeInBytes);
        put(plane.horizontalSubsampling);
        put(plane.verticalSubsampling);
    }
    void put(Rect const& area) {
        put(area.left);
        put(area.top);
        put(area.right);
        put(area.bottom);
    }
    void put(XyColor const& color) {
        put(color.x);
        put(color.y);
    }
    void put(Smpte2086 const& display) {
        put(display.primaryRed);
        put(display.primaryGreen);
        put(display.primaryBlue);
        put(display.whitePoint);
        put(display.maxLuminance);
        put(display.minLuminance);
    }
    void put(Cta861_3 const& light) {
        put(light.maxContentLightLevel);
        put(light.maxFrameAverageLightLevel);
    }
    template <typename T>
    void put(std::vector<T> const& items) {
        put(static_cast<int64_t>(items.size()));
        for (T const& item : items) {
            put(item);
        }
    }

    std::vector<uint8_t> const& bytes() const { return mBytes; }

  private:
    void putText(char const* text, size_t length) {
        put(static_cast<int64_t>(length));
        append(text, length);
    }
    void append(void const* data, size_t size) {
        auto const* const bytes = static_cast<uint8_t const*>(data);
        mBytes.insert(mBytes.end(), bytes, bytes + size);
    }

    std::vector<uint8_t> mBytes;
};

/** Decodes the bytes of a property; each step returns false when too few are left. */
class Decoder {
  public:
    explicit Decoder(hidl_vec<uint8_t> const& bytes)
        : mNext(bytes.data()), mRemaining(bytes.size()) {}

    template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>>>
    bool take(T& value) {
        if (mRemaining < sizeof(value)) {
            return false;
        }
        memcpy(&value, mNext, sizeof(value));
        skip(sizeof(value));
        return true;
    }
    bool take(std::string& text) {
        size_t length = 0;
        if (!takeCount(length)) {
            return false;
        }
        text.assign(reinterpret_cast<char const*>(mNext), length);
        skip(length);
        return true;
    }
    bool take(ExtendableType& type) { return take(type.name) && take(type.value); }
    bool take(PlaneLayoutComponent& component) {
        return take(component.type) && take(component.offsetInBits) && take(component.sizeInBits);
    }
    bool take(PlaneLayout& plane) {
        return take(plane.components) && take(plane.offsetInBytes) &&
               take(plane.sampleIncrementInBits) && take(plane.strideInBytes) &&
               take(plane.widthInSamples) && take(plane.heightInSamples) &&
               take(plane.totalSizeInBytes) && take(plane.horizontalSubsampling) &&
               take(plane.verticalSubsampling);
    }
    bool take(Rect& area) {
        return take(area.left) && take(area.top) && take(area.right) && take(area.bottom);
    }
    bool take(XyColor& color) { return take(color.x) && take(color.y); }
    bool take(Smpte2086& display) {
        return take(display.primaryRed) && take(display.primaryGreen) &&
               take(display.primaryBlue) && take(display.whitePoint) &&
               take(display.maxLuminance) && take(display.minLuminance);
    }
    bool take(Cta861_3& light) {
        return take(light.maxContentLightLevel) && take(light.maxFrameAverageLightLevel);
    }
    template <typename T>
    bool take(std::vector<T>& items) {
        size_t count = 0;
        if (!takeCount(count)) {
            return false;
        }
        // Not allocated in advance: a wrong count then runs out of bytes, not of memory.
        for (size_t i = 0; i < count; ++i) {
            if (!take(items.emplace_back())) {
                return false;
            }
        }
        return true;
    }

    /** Decodes a property's type; returns false for another one. */
    bool takeType(MetadataType const& expected) {
        std::string name;
        int64_t value = 0;
        return take(name) && take(value) && expected.name == name && expected.value == value;
    }

    bool isAtEnd() const { return mRemaining == 0; }

  private:
    /** Decodes a count. An item takes a byte at least: a larger count is wrong. */
    bool takeCount(size_t& count) {
        int64_t value = 0;
        if (!take(value) || value < 0 || static_cast<uint64_t>(value) > mRemaining) {
            return false;
        }
        count = static_cast<size_t>(value);
        return true;
    }
    void skip(size_t size) {
        mNext += size;
        mRemaining -= size;
    }

    uint8_t const* mNext;
    size_t mRemaining;
};

template <typename T>
status_t encodeProperty(MetadataType const& type, T const& value, hidl_vec<uint8_t>* encoded) {
    if (encoded == nullptr) {
        return BAD_VALUE;
    }
    Encoder encoder;
    encoder.put(type);
    encoder.put(value);
    *encoded = encoder.bytes();
    return OK;
}

template <typename T>
status_t decodeProperty(MetadataType const& type, hidl_vec<uint8_t> const& encoded, T* value) {
    Decoder decoder(encoded);
    T result{};
    if (value == nullptr || !decoder.takeType(type) || !decoder.take(result) ||
        !decoder.isAtEnd()) {
        return BAD_VALUE;
    }
    *value = std::move(result);
    return OK;
}

template <typename T>
status_t encodeProperty(MetadataType const& type, std::optional<T> const& value,
                        hidl_vec<uint8_t>* encoded) {
    if (encoded != nullptr && !value) {
        *encoded = hidl_vec<uint8_t>();
        return OK;
    }
    return value ? encodeProperty(type, *value, encoded) : status_t{BAD_VALUE};
}

template <typename T>
status_t decodeProperty(MetadataType const& type, hidl_vec<uint8_t> const& encoded,
                        std::optional<T>* value) {
    if (value == nullptr) {
        return BAD_VALUE;
    }
    T result{};
    if (encoded.size() == 0) {
        value->reset();
        return OK;
    }
    status_t const error = decodeProperty(type, encoded, &result);
    if (error == OK) {
        *value = std::move(result);
    }
    return error;
}

}  // namespace

bool isStandardMetadataType(MetadataType const& metadataType) {
    return metadataType.name == GRALLOC4_STANDARD_METADATA_TYPE;
}

bool isStandardPlaneLayoutComponentType(ExtendableType const& componentType) {
    return componentType.name == GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE;
}

status_t encodeBufferId(uint64_t bufferId, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_BufferId, bufferId, encoded);
}
status_t decodeBufferId(hidl_vec<uint8_t> const& encoded, uint64_t* bufferId) {
    return decodeProperty(MetadataType_BufferId, encoded, bufferId);
}

status_t encodeName(std::string const& name, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Name, name, encoded);
}
status_t decodeName(hidl_vec<uint8_t> const& encoded, std::string* name) {
    return decodeProperty(MetadataType_Name, encoded, name);
}

status_t encodeWidth(uint64_t width, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Width, width, encoded);
}
status_t decodeWidth(hidl_vec<uint8_t> const& encoded, uint64_t* width) {
    return decodeProperty(MetadataType_Width, encoded, width);
}

status_t encodeHeight(uint64_t height, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Height, height, encoded);
}
status_t decodeHeight(hidl_vec<uint8_t> const& encoded, uint64_t* height) {
    return decodeProperty(MetadataType_Height, encoded, height);
}

status_t encodeLayerCount(uint64_t layerCount, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_LayerCount, layerCount, encoded);
}
status_t decodeLayerCount(hidl_vec<uint8_t> const& encoded, uint64_t* layerCount) {
    return decodeProperty(MetadataType_LayerCount, encoded, layerCount);
}

status_t encodePixelFormatRequested(PixelFormat const& format, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_PixelFormatRequested, format, encoded);
}
status_t decodePixelFormatRequested(hidl_vec<uint8_t> const& encoded, PixelFormat* format) {
    return decodeProperty(MetadataType_PixelFormatRequested, encoded, format);
}

status_t encodeUsage(uint64_t usage, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Usage, usage, encoded);
}
status_t decodeUsage(hidl_vec<uint8_t> const& encoded, uint64_t* usage) {
    return decodeProperty(MetadataType_Usage, encoded, usage);
}

status_t encodeAllocationSize(uint64_t allocationSize, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_AllocationSize, allocationSize, encoded);
}
status_t decodeAllocationSize(hidl_vec<uint8_t> const& encoded, uint64_t* allocationSize) {
    return decodeProperty(MetadataType_AllocationSize, encoded, allocationSize);
}

status_t encodePlaneLayouts(std::vector<PlaneLayout> const& planeLayouts,
                            hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_PlaneLayouts, planeLayouts, encoded);
}
status_t decodePlaneLayouts(hidl_vec<uint8_t> const& encoded,
                            std::vector<PlaneLayout>* planeLayouts) {
    return decodeProperty(MetadataType_PlaneLayouts, encoded, planeLayouts);
}

status_t encodePixelFormatFourCC(uint32_t value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_PixelFormatFourCC, value, encoded);
}
status_t decodePixelFormatFourCC(hidl_vec<uint8_t> const& encoded, uint32_t* value) {
    return decodeProperty(MetadataType_PixelFormatFourCC, encoded, value);
}

status_t encodePixelFormatModifier(uint64_t value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_PixelFormatModifier, value, encoded);
}
status_t decodePixelFormatModifier(hidl_vec<uint8_t> const& encoded, uint64_t* value) {
    return decodeProperty(MetadataType_PixelFormatModifier, encoded, value);
}

status_t encodeProtectedContent(uint64_t value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_ProtectedContent, value, encoded);
}
status_t decodeProtectedContent(hidl_vec<uint8_t> const& encoded, uint64_t* value) {
    return decodeProperty(MetadataType_ProtectedContent, encoded, value);
}

status_t encodeCompression(ExtendableType const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Compression, value, encoded);
}
status_t decodeCompression(hidl_vec<uint8_t> const& encoded, ExtendableType* value) {
    return decodeProperty(MetadataType_Compression, encoded, value);
}

status_t encodeInterlaced(ExtendableType const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Interlaced, value, encoded);
}
status_t decodeInterlaced(hidl_vec<uint8_t> const& encoded, ExtendableType* value) {
    return decodeProperty(MetadataType_Interlaced, encoded, value);
}

status_t encodeChromaSiting(ExtendableType const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_ChromaSiting, value, encoded);
}
status_t decodeChromaSiting(hidl_vec<uint8_t> const& encoded, ExtendableType* value) {
    return decodeProperty(MetadataType_ChromaSiting, encoded, value);
}

status_t encodeCrop(std::vector<Rect> const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Crop, value, encoded);
}
status_t decodeCrop(hidl_vec<uint8_t> const& encoded, std::vector<Rect>* value) {
    return decodeProperty(MetadataType_Crop, encoded, value);
}

status_t encodeDataspace(Dataspace const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Dataspace, value, encoded);
}
status_t decodeDataspace(hidl_vec<uint8_t> const& encoded, Dataspace* value) {
    return decodeProperty(MetadataType_Dataspace, encoded, value);
}

status_t encodeBlendMode(BlendMode const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_BlendMode, value, encoded);
}
status_t decodeBlendMode(hidl_vec<uint8_t> const& encoded, BlendMode* value) {
    return decodeProperty(MetadataType_BlendMode, encoded, value);
}

status_t encodeSmpte2086(std::optional<Smpte2086> const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Smpte2086, value, encoded);
}
status_t decodeSmpte2086(hidl_vec<uint8_t> const& encoded, std::optional<Smpte2086>* value) {
    return decodeProperty(MetadataType_Smpte2086, encoded, value);
}

status_t encodeCta861_3(std::optional<Cta861_3> const& value, hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Cta861_3, value, encoded);
}
status_t decodeCta861_3(hidl_vec<uint8_t> const& encoded, std::optional<Cta861_3>* value) {
    return decodeProperty(MetadataType_Cta861_3, encoded, value);
}

status_t encodeSmpte2094_40(std::optional<std::vector<uint8_t>> const& value,
                            hidl_vec<uint8_t>* encoded) {
    return encodeProperty(MetadataType_Smpte2094_40, value, encoded);
}
status_t decodeSmpte2094_40(hidl_vec<uint8_t> const& encoded,
                            std::optional<std::vector<uint8_t>>* value) {
    return decodeProperty(MetadataType_Smpte2094_40, encoded, value);
}

}  // namespace android::gralloc4
