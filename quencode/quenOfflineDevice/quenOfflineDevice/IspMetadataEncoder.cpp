#define LOG_TAG "quenOfflineDevice"

#include <mtkcam/isp_metadata.h>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/IspMetadata.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using NSCam::IMetadata;
using NSCam::MRect;

namespace {

/** How the items of one IMetadata type travel to the ISP. */
struct TypeMapping {
    int metadataType;
    uint32_t ispType;
    uint32_t bytesPerItem;
};

// Float and int64 swap their codes; a rectangle travels as four int32.
constexpr TypeMapping kTypeMappings[] = {
        {IMetadata::TYPE_MUINT8, kIspTypeByte, 1},  {IMetadata::TYPE_MINT32, kIspTypeInt32, 4},
        {IMetadata::TYPE_MFLOAT, kIspTypeFloat, 4}, {IMetadata::TYPE_MINT64, kIspTypeInt64, 8},
        {IMetadata::TYPE_MRect, kIspTypeInt32, 16},
};

TypeMapping const* findMapping(int metadataType) {
    for (TypeMapping const& mapping : kTypeMappings) {
        if (mapping.metadataType == metadataType) {
            return &mapping;
        }
    }
    return nullptr;
}

std::vector<int32_t> flattenRects(IMetadata::IEntry const& entry) {
    std::vector<int32_t> values;
    values.reserve(4 * entry.count() + 1);  // an array also for no rectangles: size 0, not null
    for (size_t i = 0; i < entry.count(); ++i) {
        MRect const rect = entry.itemAt(i, NSCam::Type2Type<MRect>());
        values.insert(values.end(), {rect.p.x, rect.p.y, rect.s.w, rect.s.h});
    }
    return values;
}

int addEntry(std::vector<unsigned char>& out, IMetadata::IEntry const& entry,
             TypeMapping const& mapping) {
    unsigned int const byteSize = static_cast<unsigned int>(entry.count()) * mapping.bytesPerItem;
    if (mapping.metadataType != IMetadata::TYPE_MRect) {
        return add_isp_metadata_entry(out, entry.tag(), mapping.ispType,
                                      const_cast<void*>(entry.data()), byteSize, nullptr);
    }
    std::vector<int32_t> values = flattenRects(entry);
    QLOGD("IMetadata entry tag: 0x%X, type: %d, count: %d, byte_count: %d, count*byte_count: %d",
          entry.tag(), entry.type(), static_cast<int>(entry.count()), mapping.bytesPerItem,
          byteSize);
    return add_isp_metadata_entry(out, entry.tag(), mapping.ispType, values.data(), byteSize,
                                  nullptr);
}

}  // namespace

/**
 * Encodes metadata into the ISP's flat buffer, in the metadata's own order. Entries of types that
 * the ISP does not know, and those too large for a record, are left out with a warning.
 *
 * @param out reinitialised; a writer that cannot do so aborts the process
 */
void quenOfflineDevice::convertToISPMetadata(IMetadata* meta, std::vector<unsigned char>& out) {
    QLOGI("convertToISPMetadata E");
    if (initial_isp_metadata_vector(out, static_cast<unsigned int>(meta->count())) != 0) {
        QFATAL("[Fatal] initial_isp_metadata_vector fail");
    }
    QLOGD("IMetadata entry count : %d", static_cast<int>(meta->count()));
    for (size_t i = 0; i < meta->count(); ++i) {
        IMetadata::IEntry const entry = meta->entryAt(i);
        TypeMapping const* const mapping = findMapping(entry.type());
        if (mapping == nullptr) {
            QLOGW("tag[0x%X] has not support type[%d]", entry.tag(), entry.type());
            continue;
        }
        int const error = addEntry(out, entry, *mapping);
        if (error != 0) {
            QLOGW("tag[0x%X] is not support with err[%d], maybe data size is too large",
                  entry.tag(), error);
        }
    }
    QLOGI("convertToISPMetadata X");
}
