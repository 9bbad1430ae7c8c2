#include "host/metadata/IspMetadataReader.h"

#include <cstring>

#include "host/metadata/IspMetadataLayout.h"

namespace quen::host {

namespace {

constexpr uint32_t kByte = 0;
constexpr uint32_t kInt32 = 1;
constexpr uint32_t kInt64 = 2;
constexpr uint32_t kFloat = 3;

template <typename T>
std::optional<T> itemAt(IspRecord const& record, uint32_t type, size_t index) {
    if (record.type != type || index >= record.count()) {
        return std::nullopt;
    }
    T item;
    memcpy(&item, record.data + index * sizeof(item), sizeof(item));
    return item;
}

/** Returns the error of a record, or null. */
char const* findFault(IspRecordLayout const& record) {
    if (record.type >= kIspTypeCount) {
        return "a record has an unknown type";
    }
    if (record.dataSize > kIspDataBytes) {
        return "a record claims more data than it has room for";
    }
    if (record.dataSize % kIspItemBytes[record.type] != 0) {
        return "a record's data is not a whole number of items";
    }
    return nullptr;
}

}  // namespace

size_t IspRecord::count() const {
    return type < kIspTypeCount ? byteSize / kIspItemBytes[type] : 0;
}

std::optional<uint8_t> IspRecord::byteAt(size_t index) const {
    return itemAt<uint8_t>(*this, kByte, index);
}

std::optional<int32_t> IspRecord::int32At(size_t index) const {
    return itemAt<int32_t>(*this, kInt32, index);
}

std::optional<int64_t> IspRecord::int64At(size_t index) const {
    return itemAt<int64_t>(*this, kInt64, index);
}

std::optional<float> IspRecord::floatAt(size_t index) const {
    return itemAt<float>(*this, kFloat, index);
}

bool IspMetadataReader::fail(char const* error) {
    mRecords = nullptr;
    mCount = 0;
    mError = error;
    return false;
}

bool IspMetadataReader::parse(void const* data, size_t size) {
    fail("");
    if (size == 0) {
        return true;
    }
    if (data == nullptr || size < sizeof(IspHeader)) {
        return fail("too short for a header");
    }
    auto const* const bytes = static_cast<uint8_t const*>(data);
    IspHeader header;
    memcpy(&header, bytes, sizeof(header));
    if (header.entryCount == 0) {
        return true;
    }
    if (header.firstRecordOffset < sizeof(header) || header.firstRecordOffset > size) {
        return fail("the first record lies outside of the buffer");
    }
    if (header.entryCount > (size - header.firstRecordOffset) / sizeof(IspRecordLayout)) {
        return fail("too short for its records");
    }
    uint8_t const* const records = bytes + header.firstRecordOffset;
    for (size_t i = 0; i < header.entryCount; ++i) {
        IspRecordLayout record;
        memcpy(&record, records + i * sizeof(record), sizeof(record));
        if (char const* const fault = findFault(record); fault != nullptr) {
            return fail(fault);
        }
    }
    mRecords = records;
    mCount = header.entryCount;
    return true;
}

IspRecord IspMetadataReader::at(size_t index) const {
    uint8_t const* const address = mRecords + index * sizeof(IspRecordLayout);
    IspRecord record;
    memcpy(&record.tag, address + offsetof(IspRecordLayout, tag), sizeof(record.tag));
    memcpy(&record.type, address + offsetof(IspRecordLayout, type), sizeof(record.type));
    memcpy(&record.byteSize, address + offsetof(IspRecordLayout, dataSize),
           sizeof(record.byteSize));
    record.data = address + offsetof(IspRecordLayout, data);
    return record;
}

std::optional<IspRecord> IspMetadataReader::find(uint32_t tag) const {
    for (size_t i = mCount; i-- > 0;) {
        IspRecord const record = at(i);
        if (record.tag == tag) {
            return record;
        }
    }
    return std::nullopt;
}

std::optional<uint8_t> IspMetadataReader::byteOf(uint32_t tag, size_t index) const {
    auto const record = find(tag);
    return record ? record->byteAt(index) : std::nullopt;
}

std::optional<int32_t> IspMetadataReader::int32Of(uint32_t tag, size_t index) const {
    auto const record = find(tag);
    return record ? record->int32At(index) : std::nullopt;
}

std::optional<int64_t> IspMetadataReader::int64Of(uint32_t tag, size_t index) const {
    auto const record = find(tag);
    return record ? record->int64At(index) : std::nullopt;
}

std::optional<float> IspMetadataReader::floatOf(uint32_t tag, size_t index) const {
    auto const record = find(tag);
    return record ? record->floatAt(index) : std::nullopt;
}

}  // namespace quen::host
