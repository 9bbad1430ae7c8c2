#define LOG_TAG "quenOfflineDevice"

#include <cstring>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/HalInterface.h"
#include "quenOfflineDevice/IspMetadata.h"

using NSCam::IMetadata;
using NSCam::Type2Type;

namespace {

// The buffer: a header, then records of one size, all little-endian and of no particular alignment.
constexpr size_t kEntryCountOffset = 12;
constexpr size_t kFirstRecordOffsetOffset = 16;
constexpr size_t kRecordBytes = 56;
constexpr size_t kRecordTagOffset = 0;
constexpr size_t kRecordTypeOffset = 4;
constexpr size_t kRecordDataSizeOffset = 8;
constexpr size_t kRecordDataOffset = 16;

constexpr uint32_t kBytesPerItem[] = {1, 4, 8, 4};  // by ISP type code

template <typename T>
T load(uint8_t const* address) {
    T value;
    memcpy(&value, address, sizeof(value));
    return value;
}

uint32_t bytesPerItem(uint32_t type) {
    return type < sizeof(kBytesPerItem) / sizeof(kBytesPerItem[0]) ? kBytesPerItem[type] : 0;
}

void pushItem(IMetadata::IEntry& entry, uint32_t type, uint8_t const* item) {
    switch (type) {
        case kIspTypeByte:
            entry.push_back(load<uint8_t>(item), Type2Type<uint8_t>());
            break;
        case kIspTypeInt32:
            entry.push_back(load<int32_t>(item), Type2Type<int32_t>());
            break;
        case kIspTypeInt64:
            entry.push_back(load<int64_t>(item), Type2Type<int64_t>());
            break;
        case kIspTypeFloat:
            entry.push_back(load<float>(item), Type2Type<float>());
            break;
        default:
            break;
    }
}

IMetadata::IEntry decodeRecord(uint8_t const* record, uint32_t tag) {
    uint32_t const type = load<uint32_t>(record + kRecordTypeOffset);
    uint32_t const step = bytesPerItem(type);
    // A record with data of an unknown type keeps the reader here for good: its step is 0, and such
    // records must not be sent. Volatile, so that no compiler makes up another end for it.
    uint32_t const volatile dataSize = load<uint32_t>(record + kRecordDataSizeOffset);
    IMetadata::IEntry entry(tag);
    for (size_t offset = 0; offset < dataSize; offset += step) {
        pushItem(entry, type, record + kRecordDataOffset + offset);
    }
    return entry;
}

}  // namespace

/**
 * Decodes the ISP's flat metadata buffer. The header and the records are trusted: a data size that
 * is not a whole number of items takes in one item more, one beyond the data area reads on into the
 * next record. A later record replaces an earlier one of the same tag.
 *
 * @param data null: nothing to decode
 * @return false for a null buffer only
 */
bool HalInterface::ClientCallback::convertToIMetadata(void const* data, IMetadata& out) {
    if (data == nullptr) {
        return false;
    }
    auto const* const buffer = static_cast<uint8_t const*>(data);
    QLOGD("ISPMeta entry count : %d", load<uint32_t>(buffer + kEntryCountOffset));
    for (uint32_t i = 0; i < load<uint32_t>(buffer + kEntryCountOffset); ++i) {
        uint8_t const* const record =
                buffer + load<uint32_t>(buffer + kFirstRecordOffsetOffset) + kRecordBytes * i;
        uint32_t const tag = load<uint32_t>(record + kRecordTagOffset);
        QLOGD("tag : 0x%X", tag);
        out.update(tag, decodeRecord(record, tag));
    }
    return true;
}
