#include "host/isp/jpeg/Exif.h"

#include <utility>

namespace quen::host::isp {

namespace {

constexpr char kSoftware[] = "quenOfflineDevice " QUEN_VERSION;
constexpr uint8_t kIdentifier[] = {'E', 'x', 'i', 'f', 0, 0};

}  // namespace

std::vector<uint8_t> buildExif(PictureFacts facts) {
    ExifModule const* const module = exifModule();
    if (module == nullptr) {
        return {};
    }
    facts.software = kSoftware;
    std::vector<uint8_t> content = module->ofPicture(facts);
    if (!content.empty()) {
        content.insert(content.begin(), std::begin(kIdentifier), std::end(kIdentifier));
    }
    return content;
}

}  // namespace quen::host::isp
