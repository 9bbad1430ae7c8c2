#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/bridge/ResultMetadata.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "quenCommon/Log.h"
#include "quenGralloc/ImportedBuffer.h"
#include "quenOfflineDevice/metadata/MetadataTags.h"
#include "quenOfflineDevice/request/TuningHandles.h"

using NSCam::IMetadata;
using NSCam::Type2Type;

namespace quen {
namespace {

/** What the ISP says of the tuning data it wrote. */
struct TuningHeader {
    int32_t requestNo = 0;
    int32_t frameNumber = 0;
    int32_t totalUsedBytes = 0;  // counted from the buffer's start
};

constexpr size_t kRequestNoOffset = 0;
constexpr size_t kFrameNumberOffset = 12;
constexpr size_t kTotalUsedBytesOffset = 32;

/** Reads the header; all zero when the buffer cannot be accessed. */
TuningHeader readTuningHeader(void const* address) {
    TuningHeader header;
    if (address == nullptr || address == MAP_FAILED) {
        return header;
    }
    auto const* const bytes = static_cast<uint8_t const*>(address);
    memcpy(&header.requestNo, bytes + kRequestNoOffset, sizeof(header.requestNo));
    memcpy(&header.frameNumber, bytes + kFrameNumberOffset, sizeof(header.frameNumber));
    memcpy(&header.totalUsedBytes, bytes + kTotalUsedBytesOffset, sizeof(header.totalUsedBytes));
    return header;
}

}  // namespace

void logExternalTuningData(native_handle const* handle) {
    int const descriptor = handle == nullptr ? -1 : handle->data[kTuningDescriptorSlot];
    void* const address =
            mmap(nullptr, kTuningDataBytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    TuningHeader const header = readTuningHeader(address);
    QLOGI("requestNo %d, frameNumber %d, totalUsedBytes %d, bufferFd %d", header.requestNo,
          header.frameNumber, header.totalUsedBytes, descriptor);
    munmap(address, kTuningDataBytes);
}

void takeTuningData(native_handle const* handle, IMetadata& resultMetadata) {
    ImportedBuffer buffer(handle);
    void const* const address = buffer.lock(kCpuReadOften, static_cast<int32_t>(kTuningDataBytes));
    TuningHeader const header = readTuningHeader(address);
    QLOGI("requestNo %d, frameNumber %d, totalUsedBytes %d", header.requestNo, header.frameNumber,
          header.totalUsedBytes);
    // A buffer has no more bytes than its size, whatever its header says.
    int32_t const usedBytes =
            std::clamp(header.totalUsedBytes, 0, static_cast<int32_t>(kTuningDataBytes));
    IMetadata::IEntry entry(tag::yuvTuningData);
    entry.push_back(static_cast<uint8_t const*>(address), static_cast<size_t>(usedBytes),
                    Type2Type<uint8_t>());
    resultMetadata.update(tag::yuvTuningData, entry);
}

void carry3ABufferIndex(IMetadata const& resultMetadata, IMetadata& requestMetadata) {
    int32_t value = -1;
    IMetadata::IEntry const resultEntry = resultMetadata.entryFor(tag::bufferIndex3A);
    if (!resultEntry.isEmpty()) {
        value = resultEntry.itemAt(0, Type2Type<int32_t>());
    }
    if (value == -1) {
        return;
    }
    IMetadata::IEntry entry = requestMetadata.entryFor(tag::bufferIndex3A);
    if (entry.isEmpty()) {
        entry.push_back(value, Type2Type<int32_t>());
    } else {
        entry.replaceItemAt(0, value, Type2Type<int32_t>());
    }
    requestMetadata.update(tag::bufferIndex3A, entry);
}

void logCurrentMode(IMetadata const& resultMetadata) {
    IMetadata::IEntry const entry = resultMetadata.entryFor(tag::currentMode);
    if (entry.isEmpty()) {
        QLOGE("get currentMode failed from resultMetadata");
        return;
    }
    QLOGI("resultMetadata currentMode %lld",
          static_cast<long long>(entry.itemAt(0, Type2Type<int64_t>())));
}

}  // namespace quen
