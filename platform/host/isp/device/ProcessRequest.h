#pragma once

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/device/IspObserver.h"
#include "host/isp/device/Request.h"

namespace quen::host::isp {

/**
 * Executes a request: develops a raw input, crops, scales, writes every 4:2:0 output, encodes every
 * JPEG. Throws nothing.
 *
 * A JPEG's buffer ends with a trailer that states the file's size, 0 when there is no file. The
 * output tuning buffers receive the header and the calibration that was used.
 *
 * @param report legs are appended, the rest is set
 * @return OK; ILLEGAL_ARGUMENT for a malformed calibration in the input tuning buffer; RESULT_ERROR
 * when a JPEG does not fit into its buffer; RESOURCE_ERROR when a buffer cannot be accessed or
 *         memory runs out; INTERNAL_ERROR for any other failure
 */
vendor::mediatek::hardware::camera::isphal::V1_0::Status processRequest(Request& request,
                                                                        IspReport& report);

}  // namespace quen::host::isp
