#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/metadata/IspMetadata.h"

#include <algorithm>
#include <cstring>

#include <mtkcam/isp_metadata.h>

#include "quenCommon/Log.h"

using NSCam::IMetadata;
using NSCam::MRect;
using NSCam::Type2Type;

namespace quen {
namespace {

/** How items of one IMetadata type are encoded for the ISP. */
struct TypeMapping {
    int metadataType;
    uint32_t ispType;
    uint32_t bytesPerItem;
};

// Float and int64 swap their codes; a rectangle is encoded as four int32.
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
        MRect const rect = entry.itemAt(i, Type2Type<MRect>());
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

struct Header {
    uint8_t reserved[12];
    uint32_t entryCount;
    uint32_t firstRecordOffset;  ///< bytes, from the header's start
};
static_assert(sizeof(Header) == 20, "the header has 20 bytes");

struct Record {
    uint32_t tag;
    uint32_t type;
    uint32_t dataSize;  ///< bytes
    uint32_t reserved;
    uint8_t data[40];
};
static_assert(sizeof(Record) == 56, "a record has 56 bytes");

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
 * A trusted record with data of an unknown type loops forever: its step is 0, and such records must
 * not be sent. Volatile, so that no compiler assumes that the loop ends.
 */
IMetadata::IEntry decodeItems(uint8_t const* record, uint32_t type,
                              uint32_t const volatile& dataSize) {
    uint32_t const step = bytesPerItem(type);
    IMetadata::IEntry entry(load<uint32_t>(record + offsetof(Record, tag)));
    for (size_t offset = 0; offset < dataSize; offset += step) {
        pushItem(entry, type, record + offsetof(Record, data) + offset);
    }
    return entry;
}

/** Describes what is wrong with a record; null when it is sound. */
char const* findRecordFault(uint32_t type, uint32_t dataSize) {
    uint32_t const step = bytesPerItem(type);
    if (step == 0) {
        return "its type is unknown";
    }
    if (dataSize > sizeof(Record::data)) {
        return "its data does not fit a record";
    }
    return dataSize % step != 0 ? "its data is no whole number of items" : nullptr;
}

/** Decodes one record, or says why it is left out. */
void decodeCheckedRecord(uint8_t const* record, IMetadata& out) {
    uint32_t const tag = load<uint32_t>(record + offsetof(Record, tag));
    uint32_t const type = load<uint32_t>(record + offsetof(Record, type));
    uint32_t const dataSize = load<uint32_t>(record + offsetof(Record, dataSize));
    QLOGD("tag : 0x%X", tag);
    char const* const fault = findRecordFault(type, dataSize);
    if (fault != nullptr) {
        QLOGW("ISPMeta tag[0x%X] type[%u] size[%u] is left out: %s", tag, type, dataSize, fault);
        return;
    }
    out.update(tag, decodeItems(record, type, dataSize));
}

}  // namespace

void convertToISPMetadata(IMetadata const* meta, std::vector<unsigned char>& out) {
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

bool convertToIMetadata(void const* data, IMetadata& out) {
    if (data == nullptr) {
        return false;
    }
    auto const* const buffer = static_cast<uint8_t const*>(data);
    QLOGD("ISPMeta entry count : %d", load<uint32_t>(buffer + offsetof(Header, entryCount)));
    for (uint32_t i = 0; i < load<uint32_t>(buffer + offsetof(Header, entryCount)); ++i) {
        uint8_t const* const record = buffer +
                                      load<uint32_t>(buffer + offsetof(Header, firstRecordOffset)) +
                                      sizeof(Record) * i;
        uint32_t const tag = load<uint32_t>(record + offsetof(Record, tag));
        uint32_t const type = load<uint32_t>(record + offsetof(Record, type));
        QLOGD("tag : 0x%X", tag);
        auto const dataSize = load<uint32_t>(record + offsetof(Record, dataSize));
        out.update(tag, decodeItems(record, type, dataSize));
    }
    return true;
}

bool convertCheckedToIMetadata(void const* data, size_t bytes, IMetadata& out) {
    if (data == nullptr) {
        return false;
    }
    if (bytes < sizeof(Header)) {
        QLOGW("ISPMeta buffer of %zu bytes is left out: it has no room for a header", bytes);
        return true;
    }
    auto const* const buffer = static_cast<uint8_t const*>(data);
    // The buffer may be shared with its writer: checked values are not read again.
    uint32_t const entryCount = load<uint32_t>(buffer + offsetof(Header, entryCount));
    size_t const firstRecordOffset = load<uint32_t>(buffer + offsetof(Header, firstRecordOffset));
    QLOGD("ISPMeta entry count : %d", entryCount);
    size_t const room =
            firstRecordOffset < bytes ? (bytes - firstRecordOffset) / sizeof(Record) : 0;
    auto const fitting = static_cast<uint32_t>(std::min<size_t>(entryCount, room));
    for (uint32_t i = 0; i < fitting; ++i) {
        decodeCheckedRecord(buffer + firstRecordOffset + sizeof(Record) * i, out);
    }
    if (fitting < entryCount) {
        QLOGW("ISPMeta entries from %u on of %u are left out: they do not fit the buffer of %zu "
              "bytes",
              fitting, entryCount, bytes);
    }
    return true;
}

}  // namespace quen
