#include <mtkcam/isp_metadata.h>

#include <cstring>
#include <new>
#include <stdexcept>

#include "host/metadata/IspMetadataLayout.h"

using namespace quen::host;

namespace {

IspWriteError checkItems(unsigned int type, void const* data, unsigned int byteSize) {
    if (byteSize > kIspDataBytes) {
        return kIspDataTooLarge;
    }
    if (type >= kIspTypeCount) {
        return kIspUnknownType;
    }
    if (data == nullptr && byteSize != 0) {
        return kIspNoData;
    }
    return byteSize % kIspItemBytes[type] == 0 ? kIspWritten : kIspBrokenItem;
}

/** Reads the header. False unless the records end where the buffer does. */
bool readHeader(std::vector<unsigned char> const& vec, IspHeader& header) {
    if (vec.size() < sizeof(header)) {
        return false;
    }
    memcpy(&header, vec.data(), sizeof(header));
    return header.firstRecordOffset + uint64_t{header.entryCount} * sizeof(IspRecordLayout) ==
           vec.size();
}

}  // namespace

int initial_isp_metadata_vector(std::vector<unsigned char>& vec, unsigned int entryCount) {
    IspHeader header{};
    header.firstRecordOffset = sizeof(header);
    auto const* const bytes = reinterpret_cast<unsigned char const*>(&header);
    try {
        vec.reserve(sizeof(header) + size_t{entryCount} * sizeof(IspRecordLayout));
    } catch (std::bad_alloc const&) {
        return kIspNoMemory;
    } catch (std::length_error const&) {
        return kIspNoMemory;
    }
    vec.assign(bytes, bytes + sizeof(header));
    return kIspWritten;
}

int add_isp_metadata_entry(std::vector<unsigned char>& vec, unsigned int tag, unsigned int ispType,
                           void* data, unsigned int byteSize, unsigned int* usedBytes) {
    IspWriteError const error = checkItems(ispType, data, byteSize);
    if (error != kIspWritten) {
        return error;
    }
    IspHeader header;
    if (!readHeader(vec, header)) {
        return kIspNotInitialised;
    }
    IspRecordLayout record{};
    record.tag = tag;
    record.type = ispType;
    record.dataSize = byteSize;
    if (byteSize != 0) {
        memcpy(record.data, data, byteSize);
    }
    auto const* const bytes = reinterpret_cast<unsigned char const*>(&record);
    try {
        vec.insert(vec.end(), bytes, bytes + sizeof(record));
    } catch (std::bad_alloc const&) {
        return kIspNoMemory;
    }
    ++header.entryCount;
    memcpy(vec.data(), &header, sizeof(header));
    if (usedBytes != nullptr) {
        *usedBytes = static_cast<unsigned int>(vec.size());
    }
    return kIspWritten;
}
