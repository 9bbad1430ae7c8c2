#pragma once

#include <cstdint>
#include <vector>

#include <hidl/HidlSupport.h>
#include <system/camera_metadata.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/types.h>

#include "quenOfflineDevice/ClientRecords.h"
#include "recording.pb.h"

namespace quen::recorder {

/**
 * The records that cross, as messages. What is told here is what a replay compares, so both sides
 * use these.
 */

namespace isphal = ::vendor::mediatek::hardware::camera::isphal::V1_0;

/** A camera_metadata as bytes, compact; null leaves the field unset. */
template <typename Message>
void describeMetadata(camera_metadata const* metadata, Message& message) {
    if (metadata == nullptr) {
        return;
    }
    size_t const size = get_camera_metadata_compact_size(metadata);
    // Owned by the message; aligned as any allocation.
    std::string* const bytes = message.mutable_metadata();
    bytes->resize(size);
    copy_camera_metadata(bytes->data(), size, metadata);
}

void describeStreams(std::vector<StreamConfig> const& in, std::vector<StreamConfig> const& out,
                     recording::ClientCall& call);

/**
 * A request as its client gives it.
 *
 * @param holdsPictures whether the input's bytes are put in
 */
void describeProcess(PostProcessParams const& params, bool holdsPictures,
                     recording::ClientCall& call);

/** The JPEG that a call without callback has copied; nothing when it copied none. */
void describeJpeg(PostProcessParams const& params, int result, recording::ClientReturn& answer);

void describeConfiguration(isphal::ISPStreamConfiguration const& configuration,
                           recording::IspCall& call);

/** A request as the ISP gets it: of the pictures, the inputs' hashes. */
void describeRequest(isphal::ISPRequest const& from, recording::IspRequest& request);

/** A result, without what the ISP left in the outputs. */
void describeResult(isphal::ISPResult const& result, recording::ResultCall& call);

/**
 * A notification of the client.
 *
 * @param processCall that gave the callback
 * @param metadata null when it has none
 */
void describeNotification(recording::NotifyCall::Kind kind, uint64_t processCall, uint32_t number,
                          vendor::quen::hardware::camera::quenpostproc::V1_0::Status status,
                          android::hardware::hidl_vec<uint8_t> const* metadata,
                          recording::NotifyCall& call);

/** What the ISP left in an output. */
void describeOutput(native_handle const* picture, native_handle const* tuning, bool holdsPictures,
                    recording::IspOutput& output);

}  // namespace quen::recorder
