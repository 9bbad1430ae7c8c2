#pragma once

#include <cstdint>

#include <nscam/IMetadata.h>

namespace quen {

/**
 * Does the fast-display bookkeeping of one request. The client's thread.
 *
 * A raw request with the fast-display tag at 1 leaves a marker, the next raw one with the tag at 0
 * takes the marker and leaves its number, the next JPEG request with the tag takes that number over
 * as its own. Requests without the tag are ignored. The queues are process-wide.
 *
 * @param metadata the request's, before preparation
 * @param stage the stage text of this request
 * @return the request's ISP request number: the frame number, or one taken over
 */
uint32_t assignRequestNumber(NSCam::IMetadata const& metadata, char const* stage,
                             int32_t frameNumber);

/** Empties both queues and frees their storage. The client's thread. */
void forgetRequestNumbers();

}  // namespace quen
