#pragma once

#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "quenOfflineDevice/ClientRecords.h"

/** The finished JPEG of a synchronous request, from the ISP's buffer to the client's. */

namespace quen {

/**
 * Reads how many bytes of JPEG the ISP device left in a BLOB buffer. The trailer's id is printed,
 * not checked, and its size is not compared with the buffer's; the hardened build checks both.
 *
 * @param handle the device's buffer, raw
 * @param size bytes of the buffer
 * @return the JPEG's size in bytes; 0 when the trailer cannot be read; -1 in the hardened build
 *         when it describes no JPEG that fits the buffer
 */
int getJpegSize(native_handle const* handle, int size);

/**
 * Copies the finished JPEG into the client's first BLOB buffer.
 *
 * @param outputs the ISP's buffers, in the order of the client's
 * @return the JPEG's size; -1 when there is no BLOB output, or one of its two buffers cannot be
 *         accessed or cannot hold the JPEG
 */
int copyJpeg(PostProcessParams const& params,
             android::hardware::hidl_vec<
                     vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer> const& outputs);

}  // namespace quen
