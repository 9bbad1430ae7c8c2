#pragma once

#include <hidl/HidlSupport.h>
#include <system/camera_metadata.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "quenOfflineDevice/ClientRecords.h"
#include "quenOfflineDevice/request/TuningHandles.h"

namespace quen {

/** What the conversions of one request have in common. */
struct ConversionContext {
    char const* stage;                ///< the request's stage text, for the log
    camera_metadata const* settings;  ///< the client's, may be null; see convertToISPBuffer
    TuningHandles& tuningHandles;     ///< outlives what the conversions fill
};

/**
 * Converts a client buffer to an ISP buffer and attaches tuning data. The client's thread.
 *
 * A YUV input is copied into a new device buffer, a BLOB output gets a new one, everything else
 * passes through as the client's own. A failure does not stop the conversion; only
 * failures of tuning data are logged.
 *
 * @param imageBuffer null is logged; nothing is filled then
 * @param context the 3A buffer index in its settings is overwritten for an output
 * @param ispBuffer filled
 * @param used3ADebugInfo written when tuning data is looked for: not for a BLOB, not without
 *        settings
 * @param tuningData in and out: the request's of this direction; left alone where none is found
 */
void convertToISPBuffer(ImageBuffer const* imageBuffer, ConversionContext const& context,
                        vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer* ispBuffer,
                        bool* used3ADebugInfo, android::hardware::hidl_handle& tuningData,
                        Direction direction);

}  // namespace quen
