#pragma once

#include <cutils/native_handle.h>
#include <nscam/IMetadata.h>

/** Adds tuning data and request tags to a result's metadata. */

namespace quen {

/** Carries the result's 3A buffer index over into the request's metadata, which wins the merge. */
void carry3ABufferIndex(NSCam::IMetadata const& resultMetadata, NSCam::IMetadata& requestMetadata);

/** Logs the capture mode that a result names, or that it names none. */
void logCurrentMode(NSCam::IMetadata const& resultMetadata);

/**
 * Logs the header of a tuning buffer that lives in a 3A buffer; its data stays there.
 *
 * @param handle around the 3A buffer's descriptor, may be null
 */
void logExternalTuningData(native_handle const* handle);

/**
 * Puts the used bytes of a graphic tuning buffer into the result metadata, as one block.
 *
 * @param handle the raw buffer, may be null
 */
void takeTuningData(native_handle const* handle, NSCam::IMetadata& resultMetadata);

}  // namespace quen
