#include "Answers.h"

#include <cstdlib>
#include <cstring>

#include <mtkcam/isp_metadata.h>

namespace quensoak {

namespace {

constexpr uint32_t kCurrentMode = 0xc0030014;    // int64
constexpr uint32_t k3ABufferIndex = 0xc00c0018;  // int32
constexpr uint32_t kCropRegion = 0x000d0000;     // int32
constexpr uint32_t kByteTag = 0x00030000;        // bytes

constexpr unsigned int kByte = 0;
constexpr unsigned int kInt32 = 1;
constexpr unsigned int kInt64 = 2;

constexpr size_t kEntryCountOffset = 12;
constexpr size_t kFirstRecordOffset = 16;
constexpr size_t kHeaderBytes = 20;
constexpr size_t kTypeOffset = 4;
constexpr size_t kSizeOffset = 8;

using Bytes = std::vector<uint8_t>;

void add(Bytes& buffer, uint32_t tag, unsigned int type, void* items, unsigned int bytes) {
    if (add_isp_metadata_entry(buffer, tag, type, items, bytes, nullptr) != 0) {
        abort();
    }
}

/** What a sound ISP tells: a handful of records of every type. */
Bytes soundAnswer(bool withIndex) {
    Bytes buffer;
    if (initial_isp_metadata_vector(buffer, 4) != 0) {
        abort();
    }
    int64_t mode = 1 << 24;
    int32_t index = 1;
    int32_t crop[] = {0, 0, 64, 48};
    uint8_t bytes[] = {1, 2, 3, 4, 5};
    add(buffer, kCurrentMode, kInt64, &mode, sizeof(mode));
    add(buffer, kCropRegion, kInt32, crop, sizeof(crop));
    add(buffer, kByteTag, kByte, bytes, sizeof(bytes));
    if (withIndex) {
        add(buffer, k3ABufferIndex, kInt32, &index, sizeof(index));
    }
    return buffer;
}

/** A sound answer with one 32-bit word overwritten. */
Bytes spoilt(size_t offset, uint32_t value) {
    Bytes buffer = soundAnswer(true);
    memcpy(buffer.data() + offset, &value, sizeof(value));
    return buffer;
}

/** The first bytes of a sound answer. */
Bytes truncated(size_t bytes) {
    Bytes buffer = soundAnswer(true);
    buffer.resize(bytes);
    buffer.shrink_to_fit();  // what is read beyond the end is to be noticed
    return buffer;
}

}  // namespace

Answers::Answers() {
    mBuffers = {soundAnswer(true), soundAnswer(false), Bytes()};
    mSound = mBuffers.size();
    for (uint32_t const count : {5u, 1000u, 0x7fffffffu, 0xffffffffu}) {
        mBuffers.push_back(spoilt(kEntryCountOffset, count));
    }
    for (uint32_t const first : {0u, 21u, 200u, 0x7fffffffu, 0xffffffffu}) {
        mBuffers.push_back(spoilt(kFirstRecordOffset, first));
    }
    for (uint32_t const type : {4u, 9u, 0xffffffffu}) {
        mBuffers.push_back(spoilt(kHeaderBytes + kTypeOffset, type));
    }
    for (uint32_t const size : {7u, 9u, 41u, 48u, 0x10000u, 0xffffffffu}) {
        mBuffers.push_back(spoilt(kHeaderBytes + kSizeOffset, size));
    }
    for (size_t const bytes : {1u, 12u, 19u, 20u, 75u, 100u}) {
        mBuffers.push_back(truncated(bytes));
    }
}

}  // namespace quensoak
