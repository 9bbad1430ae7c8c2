#include "quenOfflineDevice/ProcessState.h"

#include "quenGralloc/UsageConversion.h"

namespace quen {

Mutex gJpegMutex;
Condition gJpegCond;
int32_t gJpegResultStatus = 0;
JpegHandover* gJpegWaiting = nullptr;
timeval gJpegDeadlineBase = {};
timespec gJpegDeadline = {};

std::queue<int32_t> gFastDisplayQueue;
std::queue<uint32_t> gPendingJpegRequestNos;

int32_t const gBufferUsage = android_convertGralloc1To0Usage(0x20066, 6);

}  // namespace quen
