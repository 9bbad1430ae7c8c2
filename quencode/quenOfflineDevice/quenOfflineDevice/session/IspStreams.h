#pragma once

#include <vector>

#include <hidl/HidlSupport.h>
#include <system/camera_metadata.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "quenOfflineDevice/ClientRecords.h"

/** Converts a session's streams to ISP streams. Any thread. */

namespace quen {

/**
 * Whether raw input is to be processed at 14 bits: any format but RAW10, in any UI mode but one. An
 * absent UI mode leaves the format's decision standing.
 *
 * @param meta session or request metadata, may be null
 * @param inputFormat Android HAL pixel format of the first input
 */
bool isNeedRaw14bit(camera_metadata const* meta, int inputFormat);

/**
 * Converts client streams to ISP streams, in the client's order.
 *
 * @param outputs the session's; the first one decides whether an input uses the RGB reprocess flow
 */
std::vector<vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream> buildIspStreams(
        Direction direction, std::vector<StreamConfig> const& streams,
        std::vector<StreamConfig> const& outputs);

/**
 * Zeroes what no field of a stream record covers. HIDL sends the records' memory as it is, and
 * copying a record leaves its padding behind: call on the final records, after the last copy.
 */
void clearPadding(
        android::hardware::hidl_vec<vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream>&
                streams);

/** Adds what the session decides to the encoded session metadata: raw depth, camera id. */
void appendSessionSettings(std::vector<unsigned char>& settings, camera_metadata const* meta,
                           bool isNeedRaw14bit);

}  // namespace quen
