#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/request/BufferConversion.h"

#include <utility>
#include <vector>

#include <quen/Quen3AInfoManager.h>
#include <system/graphics.h>

#include "quenCommon/Log.h"
#include "quenGralloc/AllocatorHelper.h"
#include "quenOfflineDevice/ProcessState.h"
#include "quenOfflineDevice/metadata/MetadataTags.h"
#include "quenOfflineDevice/request/ClientMapping.h"
#include "quenOfflineDevice/request/DeviceBuffer.h"

using android::hardware::hidl_handle;
using android::hardware::graphics::common::V1_0::PixelFormat;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;

namespace quen {
namespace {

/** gBufferUsage widened with its sign, as the allocator takes it. */
uint64_t deviceBufferUsage() {
    return static_cast<uint64_t>(int64_t{gBufferUsage});
}

bool findEntry(camera_metadata const* metadata, uint32_t tag, camera_metadata_entry_t& entry) {
    return find_camera_metadata_entry(const_cast<camera_metadata*>(metadata), tag, &entry) == 0;
}

/**
 * Overwrites an entry with a buffer index. The entry keeps its element count; should it have more
 * than one, 0 follows the index.
 *
 * @param settings the client's, the client's; passed as const, but the index is written into it
 */
bool overwriteIndex(camera_metadata const* settings, camera_metadata_entry_t const& entry,
                    int32_t bufferIndex) {
    int64_t const single = static_cast<uint32_t>(bufferIndex);
    void const* data = &single;
    std::vector<int64_t> several;
    if (entry.count > 1) {
        several.resize(entry.count);
        several[0] = single;
        data = several.data();
    }
    return update_camera_metadata_entry(const_cast<camera_metadata*>(settings), entry.index, data,
                                        entry.count, nullptr) == 0;
}

/**
 * Gets a 3A buffer for the ISP's debug information and overwrites the index in the settings with
 * its index.
 *
 * @param tuningData receives the buffer, also when the settings cannot be updated afterwards
 * @return whether the buffer is used
 */
bool getOutputTuningData(ConversionContext const& context, hidl_handle& tuningData) {
    QIF3ABufferInfo info = {};
    info.fd = -1;
    Quen3AInfoManager::Get3AInfoBuf(&info, kTuningDataBytes);
    if (info.fd < 1 || info.size < kTuningDataBytes) {
        QLOGE("get outputTuningData buffer from quencameraserver failed");
        return false;
    }
    tuningData = context.tuningHandles.wrap(info.fd);
    QLOGI("get outputTuningData buffer from quencameraserver success, bufferIndex %d, bufferFd %d",
          info.bufferIndex, info.fd);

    camera_metadata_entry_t entry;
    if (!findEntry(context.settings, tag::bufferIndex3A, entry)) {
        QLOGE("get tuningData bufferIndex from metadata faild");
        return false;
    }
    if (!overwriteIndex(context.settings, entry, info.bufferIndex)) {
        QLOGE("update ouputTuningData bufferIndex failed");
        return false;
    }
    QLOGI("update outputTuningData bufferIndex %d success", info.bufferIndex);
    return true;
}

/** Finds the tuning data that the capture left behind. Returns whether there is any. */
bool getInputTuningData(ConversionContext const& context, hidl_handle& tuningData) {
    camera_metadata_entry_t entry;
    if (findEntry(context.settings, tag::requestNo, entry)) {
        QLOGI("RequestNo for reprocess %d", entry.data.i32[0]);
    } else {
        QLOGE("get QUEN_CONTROL_REQUESTNO from metadata failed");
    }
    if (!findEntry(context.settings, tag::bufferIndex3A, entry)) {
        QLOGE("get 3AbufferIndex from metadata failed");
        return false;
    }
    int32_t const bufferIndex = entry.data.i32[0];
    QLOGI("use tuningData bufferIndex %d", bufferIndex);
    int descriptor = -1;
    Quen3AInfoManager::GetTuningData(&descriptor, static_cast<unsigned int>(bufferIndex));
    if (descriptor == -1) {
        QLOGE("get inputTuningData faild");
        return false;
    }
    tuningData = context.tuningHandles.wrap(descriptor);
    QLOGI("get inputTuningData from metadata success, bufferIndex %d, bufferFd %d", bufferIndex,
          descriptor);
    return true;
}

/** Allocates a graphic buffer for the ISP's debug information. */
void allocOutputTuningData(hidl_handle& tuningData) {
    uint32_t stride = 0;
    AllocatorHelper::getInstance().allocateGraphicBuffer(kTuningDataBytes, 1, deviceBufferUsage(),
                                                         PixelFormat::BLOB, &tuningData, &stride);
    QLOGI("alloc gralloc for outputTuningData success");
}

/** Chooses the image buffer that the ISP device gets: a device buffer or the client's own. */
void convertImage(ImageBuffer const& imageBuffer, ISPBuffer& ispBuffer, Direction direction) {
    if (direction == Direction::Input && imageBuffer.format == HAL_PIXEL_FORMAT_YCBCR_420_888) {
        QLOGI("alloc gralloc for input yuv buffer");
        void* const source = mapClientBuffer(imageBuffer);
        hidl_handle handle;
        uint32_t stride = 0;
        allocGraphicBuffer(handle, source, imageBuffer.width, imageBuffer.height,
                           HAL_PIXEL_FORMAT_YCRCB_420_SP, deviceBufferUsage(), stride);
        unmapClientBuffer(source, imageBuffer);
        ispBuffer.buffer = std::move(handle);
    } else if (direction == Direction::Output && imageBuffer.format == HAL_PIXEL_FORMAT_BLOB) {
        QLOGI("alloc gralloc for output JPEG buffer");
        hidl_handle handle;
        uint32_t stride = 0;
        AllocatorHelper::getInstance().allocateGraphicBuffer(
                static_cast<uint32_t>(imageBuffer.size), 1, deviceBufferUsage(),
                static_cast<PixelFormat>(imageBuffer.format), &handle, &stride);
        ispBuffer.buffer = std::move(handle);
    } else {
        QLOGI("use QCF gralloc buffer");
        ispBuffer.buffer = imageBuffer.buffer;
    }
}

/**
 * Finds or makes the tuning-data buffer that goes with an image.
 *
 * @return whether it is a 3A buffer, whose handle belongs to the context
 */
bool attachTuningData(ImageBuffer const& imageBuffer, ConversionContext const& context,
                      bool* used3ADebugInfo, hidl_handle& tuningData, Direction direction) {
    bool const used = direction == Direction::Output ? getOutputTuningData(context, tuningData)
                                                     : getInputTuningData(context, tuningData);
    *used3ADebugInfo = used;
    QLOGI("get 3ADebugInfo result is %d used3ADebugInfo %d", used, used);
    if (used) {
        return true;
    }
    QLOGI("no used3ADebugInfo, get inputTuningData from input metadata and alloc gralloc for "
          "outputTuningData");
    if (direction == Direction::Output) {
        allocOutputTuningData(tuningData);
        return false;
    }
    bool const isYuv = imageBuffer.format == HAL_PIXEL_FORMAT_YCBCR_420_888;
    QLOGI("tuningData type is %d", isYuv ? 0 : 1);
    camera_metadata_entry_t entry;
    if (!findEntry(context.settings, isYuv ? tag::yuvTuningData : tag::rawTuningData, entry)) {
        QLOGE("get inputTuningData from input metadata failed");
        return false;
    }
    uint32_t stride = 0;
    // Only pictures are copied: this buffer is allocated and stays as the allocator gave it.
    allocGraphicBuffer(tuningData, entry.data.u8, kTuningDataBytes, 1, HAL_PIXEL_FORMAT_BLOB,
                       deviceBufferUsage(), stride);
    QLOGI("alloc gralloc for inputTuningData success, tuningData requestNo %d, stride %d",
          entry.data.i32[0], stride);
    return false;
}

}  // namespace

void convertToISPBuffer(ImageBuffer const* imageBuffer, ConversionContext const& context,
                        ISPBuffer* ispBuffer, bool* used3ADebugInfo, hidl_handle& tuningData,
                        Direction direction) {
    QLOGI("reprocess stage %s convertToISPBuffer E", context.stage);
    if (imageBuffer == nullptr || ispBuffer == nullptr) {
        QLOGE("imageBuffer is nullptr, convertToISPBuffer failed");
        QLOGI("reprocess stage %s convertToISPBuffer X", context.stage);
        return;
    }
    bool const isBlob = imageBuffer->format == HAL_PIXEL_FORMAT_BLOB;
    ispBuffer->streamId = static_cast<uint32_t>(imageBuffer->streamId);
    ispBuffer->reserved = nullptr;
    ispBuffer->reservedSize = 0;
    convertImage(*imageBuffer, *ispBuffer, direction);
    bool is3ABuffer = false;
    if (context.settings != nullptr && !isBlob) {
        is3ABuffer =
                attachTuningData(*imageBuffer, context, used3ADebugInfo, tuningData, direction);
    }
    if (isBlob) {
        ispBuffer->tuningData = nullptr;
        ispBuffer->tuningDataSize = 0;
    } else {
        if (is3ABuffer) {
            ispBuffer->tuningData = tuningData.getNativeHandle();  // the context's, not cloned
        } else {
            ispBuffer->tuningData = tuningData;
        }
        ispBuffer->tuningDataSize = kTuningDataBytes;
    }
    QLOGI("tuningData is nullptr %d, tuningData size = %d",
          ispBuffer->tuningData.getNativeHandle() == nullptr, ispBuffer->tuningDataSize);
    QLOGI("reprocess stage %s convertToISPBuffer X", context.stage);
}

}  // namespace quen
