#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/JpegHandover.h"

#include <cutils/properties.h>

#include "quenCommon/Log.h"

pthread_mutex_t gJpegMutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t gJpegCond = PTHREAD_COND_INITIALIZER;
int32_t gJpegResultStatus = 0;
timeval gJpegDeadlineBase = {};
timespec gJpegDeadline = {};

namespace {

constexpr char kTimeoutProperty[] = "vendor.debug.camera.jpeg.timeout";
constexpr int32_t kDefaultTimeoutSeconds = 4;
constexpr long kNanosecondsPerMicrosecond = 1000;

}  // namespace

void waitForJpegResultLocking() {
    QLOGI("wait JPEG process");
    int32_t const timeoutSeconds = property_get_int32(kTimeoutProperty, kDefaultTimeoutSeconds);
    gettimeofday(&gJpegDeadlineBase, nullptr);
    gJpegDeadline.tv_sec = gJpegDeadlineBase.tv_sec + timeoutSeconds;
    gJpegDeadline.tv_nsec = gJpegDeadlineBase.tv_usec * kNanosecondsPerMicrosecond;
    pthread_mutex_lock(&gJpegMutex);
    pthread_cond_timedwait(&gJpegCond, &gJpegMutex, &gJpegDeadline);
    QLOGI("JPEG process done");
}

void signalJpegResult(int32_t clientStatus) {
    pthread_mutex_lock(&gJpegMutex);
    gJpegResultStatus = clientStatus;
    QLOGI("JPEG callback signal process");
    pthread_cond_signal(&gJpegCond);
    pthread_mutex_unlock(&gJpegMutex);
}
