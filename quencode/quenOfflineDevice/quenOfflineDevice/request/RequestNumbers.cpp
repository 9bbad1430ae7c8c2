#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/request/RequestNumbers.h"

#include "quenCommon/Log.h"
#include "quenOfflineDevice/ProcessState.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/metadata/MetadataTags.h"

namespace quen {

uint32_t assignRequestNumber(NSCam::IMetadata const& metadata, char const* stage,
                             int32_t frameNumber) {
    auto const entry = metadata.entryFor(tag::isFastDisplayRequest);
    bool const present = !entry.isEmpty();
    int32_t const fast = present ? entry.itemAt(0, NSCam::Type2Type<int32_t>()) : -1;
    bool const rawToYuv = isRawToYuv(stage);
    bool const yuvToJpeg = isYuvToJpeg(stage);

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

}  // namespace quen
