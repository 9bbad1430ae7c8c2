#pragma once

#include <nscam/IMetadata.h>

namespace quen {

/**
 * Prepares a request's metadata for the ISP from the client's tags about the capture: raw depth in
 * every stage; tuning mode, feature hint, crop and switches as the stage wants them. Tuning data
 * that travels in the metadata is removed. Any thread.
 *
 * @param meta changed in place; null is logged
 * @param width of the whole picture in pixels, which a JPEG is cropped to; unused in the other
 *        stage
 * @param height as `width`
 * @param stage the request's stage text; for any other text only the raw depth is set and tuning
 * data removed
 * @param isNeedRaw14bit whether raw input is processed at 14 bits
 */
void updateMetaData(NSCam::IMetadata* meta, int width, int height, char const* stage,
                    bool isNeedRaw14bit);

}  // namespace quen
