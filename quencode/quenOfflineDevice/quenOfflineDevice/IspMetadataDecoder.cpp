#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/IspMetadataDecoder.h"

#include <algorithm>
#include <cstring>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/IspMetadata.h"

using NSCam::IMetadata;
using NSCam::Type2Type;

namespace quen {
namespace {

// The buffer: a header, then records of one size, all little-endian and of no particular alignment.
constexpr size_t kEntryCountOffset = 12;
constexpr size_t kFirstRecordOffsetOffset = 16;
constexpr size_t kHeaderBytes = 20;
constexpr size_t kRecordBytes = 56;
constexpr size_t kRecordTagOffset = 0;
constexpr size_t kRecordTypeOffset = 4;
constexpr size_t kRecordDataSizeOffset = 8;
constexpr size_t kRecordDataOffset = 16;
constexpr size_t kRecordDataBytes = kRecordBytes - kRecordDataOffset;

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

/**
 * Reads the items that start within the first `dataSize` bytes of a record's data.
 *
 * A trusted record with data of an unknown type keeps the reader here for good: its step is 0, and
 * such records must not be sent. Volatile, so that no compiler makes up another end for it.
 */
IMetadata::IEntry decodeItems(uint8_t const* record, uint32_t type,
                              uint32_t const volatile& dataSize) {
    uint32_t const step = bytesPerItem(type);
    IMetadata::IEntry entry(load<uint32_t>(record + kRecordTagOffset));
    for (size_t offset = 0; offset < dataSize; offset += step) {
        pushItem(entry, type, record + kRecordDataOffset + offset);
    }
    return entry;
}

/** What is wrong with a record, in words; null when nothing is. */
char const* findRecordFault(uint32_t type, uint32_t dataSize) {
    uint32_t const step = bytesPerItem(type);
    if (step == 0) {
        return "its type is unknown";
    }
    if (dataSize > kRecordDataBytes) {
        return "its data does not fit a record";
    }
    return dataSize % step != 0 ? "its data is no whole number of items" : nullptr;
}

/** Decodes one record, or says why it is left out. */
void decodeCheckedRecord(uint8_t const* record, IMetadata& out) {
    uint32_t const tag = load<uint32_t>(record + kRecordTagOffset);
    uint32_t const type = load<uint32_t>(record + kRecordTypeOffset);
    uint32_t const dataSize = load<uint32_t>(record + kRecordDataSizeOffset);
    QLOGD("tag : 0x%X", tag);
    char const* const fault = findRecordFault(type, dataSize);
    if (fault != nullptr) {
        QLOGW("ISPMeta tag[0x%X] type[%u] size[%u] is left out: %s", tag, type, dataSize, fault);
        return;
    }
    out.update(tag, decodeItems(record, type, dataSize));
}

}  // namespace

bool decodeTrustedIspMetadata(void const* data, IMetadata& out) {
    if (data == nullptr) {
        return false;
    }
    auto const* const buffer = static_cast<uint8_t const*>(data);
    QLOGD("ISPMeta entry count : %d", load<uint32_t>(buffer + kEntryCountOffset));
    for (uint32_t i = 0; i < load<uint32_t>(buffer + kEntryCountOffset); ++i) {
        uint8_t const* const record =
                buffer + load<uint32_t>(buffer + kFirstRecordOffsetOffset) + kRecordBytes * i;
        uint32_t const tag = load<uint32_t>(record + kRecordTagOffset);
        uint32_t const type = load<uint32_t>(record + kRecordTypeOffset);
        QLOGD("tag : 0x%X", tag);
        auto const dataSize = load<uint32_t>(record + kRecordDataSizeOffset);
        out.update(tag, decodeItems(record, type, dataSize));
    }
    return true;
}

bool decodeIspMetadata(void const* data, size_t bytes, IMetadata& out) {
    if (data == nullptr) {
        return false;
    }
    if (bytes < kHeaderBytes) {
        QLOGW("ISPMeta buffer of %zu bytes is left out: it has no room for a header", bytes);
        return true;
    }
    auto const* const buffer = static_cast<uint8_t const*>(data);
    // The buffer may be shared with its writer: what was checked is not read again.
    uint32_t const entryCount = load<uint32_t>(buffer + kEntryCountOffset);
    size_t const first = load<uint32_t>(buffer + kFirstRecordOffsetOffset);
    QLOGD("ISPMeta entry count : %d", entryCount);
    size_t const room = first < bytes ? (bytes - first) / kRecordBytes : 0;
    auto const fitting = static_cast<uint32_t>(std::min<size_t>(entryCount, room));
    for (uint32_t i = 0; i < fitting; ++i) {
        decodeCheckedRecord(buffer + first + kRecordBytes * i, out);
    }
    if (fitting < entryCount) {
        QLOGW("ISPMeta entries from %u on of %u are left out: they do not fit the buffer of %zu "
              "bytes",
              fitting, entryCount, bytes);
    }
    return true;
}

}  // namespace quen
