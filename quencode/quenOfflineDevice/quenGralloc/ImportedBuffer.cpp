#include "quenGralloc/ImportedBuffer.h"

#include <unistd.h>

namespace quen {

ImportedBuffer::ImportedBuffer(native_handle const* raw)
    : mMapper(MapperHelper::getInstance()), mHandle(raw) {
    mMapper.importBuffer(mHandle);
}

ImportedBuffer::~ImportedBuffer() {
    int releaseFence = -1;
    mMapper.unlock(mHandle, releaseFence);
    if (releaseFence >= 0) {
        close(releaseFence);
    }
    mMapper.freeBuffer(mHandle);
}

void* ImportedBuffer::lock(uint64_t cpuUsage, int32_t width) {
    void* address = nullptr;
    mMapper.lock(mHandle, cpuUsage, {0, 0, width, 1}, -1, address);
    return address;
}

android_ycbcr ImportedBuffer::lockYCbCr(uint64_t cpuUsage, int32_t width, int32_t height) {
    android_ycbcr planes = {};
    mMapper.lockYCbCr_4_0(mHandle, cpuUsage, {0, 0, width, height}, -1, planes);
    return planes;
}

}  // namespace quen
