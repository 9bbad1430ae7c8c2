#pragma once

#include <cstdint>
#include <queue>

#include <nscam/IMetadata.h>

/**
 * The request numbers of the fast-display sequence, for the whole process: a raw request with
 * the fast-display tag at 1 leaves a marker, the next raw one with the tag at 0 takes the marker
 * and leaves its number, the next JPEG request with the tag takes that number over as its own.
 * Requests without the tag have no part in it.
 *
 * No lock: used by `process` and emptied by `uinit`, which the client serialises.
 */

extern std::queue<int32_t> gFastDisplayQueue;        // markers, always 1
extern std::queue<uint32_t> gPendingJpegRequestNos;  // numbers that JPEG requests take over

/**
 * Does the fast-display bookkeeping of one request.
 *
 * @param metadata the request's, before preparation
 * @param stage the stage text of this request
 * @return the request's ISP request number: the frame number, or one taken over
 */
uint32_t assignRequestNumber(NSCam::IMetadata const& metadata, char const* stage,
                             int32_t frameNumber);

/** Empties both queues and frees their storage. */
void forgetRequestNumbers();
