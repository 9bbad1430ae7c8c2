#include "host/metadata/VendorTags.h"

#include <strings.h>

#include <algorithm>
#include <iterator>

#include "host/metadata/TagTable.h"

namespace quen::host {

namespace {

constexpr TagInfo kTags[] = {
        ints(0x00010038, "ispFeatureHint", kAnyNumber),  // the ISP's, though in Android's section
        ints(0x800b000b, "needMsnr", 1),
        ints(0x800b000c, "rawInputStage", 1),
        ints(0x800b000e, "tuningMode", 1),
        bytes(0x800b0016, "rawTuningData", kAnyNumber),
        bytes(0x800b0017, "yuvTuningData", kAnyNumber),
        ints(0x800b001b, "rawBitDepth", 1),
        ints(0xc0000005, "ispCameraId", 1),
        longs(0xc0030014, "currentMode", 1),
        ints(0xc0030022, "Engineermode", 1),
        ints(0xc0030092, "fusion", 1),
        ints(0xc0030099, "cameraId", 1),
        ints(0xc00300a0, "QUEN_CONTROL_ISDUALSLAVE", 1),
        ints(0xc00300a2, "QUEN_CONTROL_REQUESTNO", 1),
        ints(0xc00300a4, "QUEN_CONTROL_ISFASTDISPLAYREQUEST", 1),
        ints(0xc0080001, "currentUiMode", 1),
        ints(0xc0090002, "sceneMode", 1),
        ints(0xc00c000a, "forDepth", 1),
        ints(0xc00c0012, "QUEN_PARAMETER_CROP_REGION_SAT", 4),
        ints(0xc00c0018, "3ABufferIndex", 1),
        ints(0xc00e0032, "QUEN_FEEDBACK_TUNNINGMODE", 1),
};

static_assert(isAscending(kTags), "tags are looked up by halving");

TagInfo const* findName(TagRange const& tags, std::string_view name) {
    auto const* const found = std::find_if(tags.begin(), tags.end(), [name](TagInfo const& info) {
        std::string_view const known = info.name;
        return known.size() == name.size() &&
               strncasecmp(known.data(), name.data(), name.size()) == 0;
    });
    return found != tags.end() ? found : nullptr;
}

}  // namespace

TagRange vendorTags() {
    return {std::begin(kTags), std::end(kTags)};
}

TagInfo const* findTag(TagRange const& tags, uint32_t tag) {
    auto const* const found = std::lower_bound(
            tags.begin(), tags.end(), tag,
            [](TagInfo const& info, uint32_t wanted) { return info.tag < wanted; });
    return found != tags.end() && found->tag == tag ? found : nullptr;
}

TagInfo const* findTag(uint32_t tag) {
    TagInfo const* const androids = findTag(androidTags(), tag);
    return androids != nullptr ? androids : findTag(vendorTags(), tag);
}

TagInfo const* findTag(std::string_view name) {
    TagInfo const* const androids = findName(androidTags(), name);
    return androids != nullptr ? androids : findName(vendorTags(), name);
}

}  // namespace quen::host
