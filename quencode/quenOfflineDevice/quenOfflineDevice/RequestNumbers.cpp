#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/RequestNumbers.h"

#include <cstring>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/MetadataTags.h"
#include "quenOfflineDevice/Stage.h"

std::queue<int32_t> gFastDisplayQueue;
std::queue<uint32_t> gPendingJpegRequestNos;

uint32_t assignRequestNumber(NSCam::IMetadata const& metadata, char const* stage,
                             int32_t frameNumber) {
    auto const entry = metadata.entryFor(tag::kIsFastDisplayRequest);
    bool const present = !entry.isEmpty();
    int32_t const fast = present ? entry.itemAt(0, NSCam::Type2Type<int32_t>()) : -1;
    bool const rawToYuv = strcmp(stage, kStageRawToYuv) == 0;
    bool const yuvToJpeg = strcmp(stage, kStageYuvToJpeg) == 0;

    uint32_t requestNumber = static_cast<uint32_t>(frameNumber);
    if (present && fast == 1 && rawToYuv) {
        gFastDisplayQueue.push(1);
    } else if (present && fast == 0 && rawToYuv && !gFastDisplayQueue.empty()) {
        gPendingJpegRequestNos.push(requestNumber);
        gFastDisplayQueue.pop();
    }
    if (present && yuvToJpeg && !gPendingJpegRequestNos.empty()) {
        requestNumber = gPendingJpegRequestNos.front();
        gPendingJpegRequestNos.pop();
    }
    QLOGD("read QUEN_CONTROL_ISFASTDISPLAYREQUEST %d res %d pRequesNo %d frame_num %d", fast,
          present, requestNumber, frameNumber);
    return requestNumber;
}

void forgetRequestNumbers() {
    std::queue<uint32_t>().swap(gPendingJpegRequestNos);
    std::queue<int32_t>().swap(gFastDisplayQueue);
}
