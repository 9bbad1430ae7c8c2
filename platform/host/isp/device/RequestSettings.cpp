#include "host/isp/device/RequestSettings.h"

#include "host/isp/device/IspTags.h"
#include "host/metadata/IspMetadataReader.h"

namespace quen::host::isp {

namespace {

constexpr size_t kRectItems = 4;

/** A tag that holds one number, and its valid values. */
struct NumberRule {
    char const* name;
    uint32_t tag;
    std::optional<int> RequestSettings::*setting;
    int smallest;
    int largest;
    int step;
};

constexpr NumberRule kNumberRules[] = {
        {"depth of raw samples", tag::kRawBitDepth, &RequestSettings::rawBits, 8, 16, 1},
        {"tuning mode", tag::kTuningMode, &RequestSettings::tuningMode, INT32_MIN, INT32_MAX, 1},
        {"JPEG quality", tag::kJpegQuality, &RequestSettings::jpegQuality, 1, 100, 1},
        {"JPEG orientation", tag::kJpegOrientation, &RequestSettings::jpegOrientation, 0, 270, 90},
};

/** The number in a record; none unless it is a byte or an int32. */
std::optional<int> numberOf(IspRecord const& record) {
    if (std::optional<int32_t> const number = record.int32At(0)) {
        return *number;
    }
    if (std::optional<uint8_t> const number = record.byteAt(0)) {
        return *number;
    }
    return std::nullopt;
}

/** Reads a tag of one number. @return false when it is malformed or out of range */
bool readNumber(IspMetadataReader const& reader, NumberRule const& rule,
                RequestSettings& settings) {
    std::optional<IspRecord> const record = reader.find(rule.tag);
    if (!record || record->byteSize == 0) {
        return true;
    }
    std::optional<int> const number = numberOf(*record);
    if (!number || *number < rule.smallest || *number > rule.largest || *number % rule.step != 0) {
        return false;
    }
    settings.*rule.setting = number;
    return true;
}

/** Reads the crop. @return false when it is malformed or empty */
bool readCrop(IspMetadataReader const& reader, RequestSettings& settings) {
    std::optional<IspRecord> const record = reader.find(tag::kCropRegion);
    if (!record || record->byteSize == 0) {
        return true;
    }
    if (record->count() != kRectItems || !record->int32At(0)) {
        return false;
    }
    PixelRect const crop{*record->int32At(0), *record->int32At(1), *record->int32At(2),
                         *record->int32At(3)};
    settings.crop = crop;
    return crop.width > 0 && crop.height > 0;
}

}  // namespace

bool parseSettings(android::hardware::hidl_vec<uint8_t> const& bytes, RequestSettings& settings,
                   std::string* problem) {
    auto const fail = [&](std::string const& text) {
        if (problem != nullptr) {
            *problem = text;
        }
        return false;
    };
    IspMetadataReader reader;
    if (!reader.parse(bytes.data(), bytes.size())) {
        return fail(std::string("the settings are malformed: ") + reader.error());
    }
    for (NumberRule const& rule : kNumberRules) {
        if (!readNumber(reader, rule, settings)) {
            return fail(std::string("the ") + rule.name + " is none of " +
                        std::to_string(rule.smallest) + " to " + std::to_string(rule.largest) +
                        (rule.step == 1 ? "" : " in steps of " + std::to_string(rule.step)));
        }
    }
    if (!readCrop(reader, settings)) {
        return fail("the crop is not four numbers, or is empty");
    }
    return true;
}

}  // namespace quen::host::isp
