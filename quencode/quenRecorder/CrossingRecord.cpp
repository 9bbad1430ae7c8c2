#include "quenRecorder/CrossingRecord.h"

#include <algorithm>
#include <cstdint>

#include <system/graphics.h>

#include "quenRecorder/BufferRecord.h"

namespace quen::recorder {
namespace {

constexpr size_t kAll = SIZE_MAX;

void describeStream(StreamConfig const& from, recording::StreamConfig& stream) {
    stream.set_stream_id(from.streamId);
    stream.set_format(from.format);
    stream.set_width(from.width);
    stream.set_height(from.height);
    stream.set_is_output(from.isOutput);
}

size_t bytesOf(ImageBuffer const& image) {
    return static_cast<size_t>(std::max(image.size, 0));
}

void describeImage(ImageBuffer const* from, recording::ImageBuffer& image) {
    if (from == nullptr) {
        image.set_is_null(true);
        return;
    }
    image.set_stream_id(from->streamId);
    image.set_format(from->format);
    image.set_size(from->size);
    image.set_width(from->width);
    image.set_height(from->height);
    if (from->buffer != nullptr) {
        describeHandle(from->buffer, *image.mutable_buffer());
    }
}

void describeIspStream(isphal::ISPStream const& from, recording::IspStream& stream) {
    stream.set_id(from.id);
    stream.set_size(from.size);
    for (uint32_t const stride : from.stride) {
        stream.add_stride(stride);
    }
    stream.set_width(from.width);
    stream.set_height(from.height);
    stream.set_format(from.format);
    stream.set_data_space(from.dataSpace);
    stream.set_buffer_layout(from.bufferLayout);
    stream.set_usage(from.usage);
    stream.set_tail(from.tail);
}

void describeIspBuffer(isphal::ISPBuffer const& from, bool isInput, recording::IspBuffer& buffer) {
    buffer.set_stream_id(from.streamId);
    if (native_handle const* const picture = from.buffer.getNativeHandle()) {
        recording::Buffer& described = *buffer.mutable_buffer();
        describeHandle(picture, described);
        if (isInput) {
            describePicture(picture, kAll, false, false, *described.mutable_content());
        }
    }
    if (native_handle const* const tuning = from.tuningData.getNativeHandle()) {
        recording::Buffer& described = *buffer.mutable_tuning();
        // A copy of a 3A buffer's handle would take standard input for its memory.
        described.set_is_3a(is3ABuffer(tuning));
        if (!described.is_3a()) {
            describeHandle(tuning, described);
        }
    }
    buffer.set_tuning_size(from.tuningDataSize);
    if (native_handle const* const reserved = from.reserved.getNativeHandle()) {
        describeHandle(reserved, *buffer.mutable_reserved());
    }
    buffer.set_reserved_size(from.reservedSize);
}

}  // namespace

void describeStreams(std::vector<StreamConfig> const& in, std::vector<StreamConfig> const& out,
                     recording::ClientCall& call) {
    for (StreamConfig const& stream : in) {
        describeStream(stream, *call.add_input_streams());
    }
    for (StreamConfig const& stream : out) {
        describeStream(stream, *call.add_output_streams());
    }
}

void describeProcess(PostProcessParams const& params, bool holdsPictures,
                     recording::ClientCall& call) {
    call.set_frame_number(params.frame_number);
    ImageBuffer const* const input = params.input_buffer;
    describeImage(input, *call.mutable_input());
    if (input != nullptr && input->buffer != nullptr) {
        describePicture(input->buffer, bytesOf(*input), false, holdsPictures,
                        *call.mutable_input()->mutable_buffer()->mutable_content());
    }
    for (ImageBuffer const* const output : params.output_buffers) {
        describeImage(output, *call.add_outputs());
    }
    describeMetadata(params.settings, call);
}

void describeJpeg(PostProcessParams const& params, int result, recording::ClientReturn& answer) {
    if (result <= 0) {
        return;
    }
    for (ImageBuffer const* const output : params.output_buffers) {
        if (output == nullptr || output->format != HAL_PIXEL_FORMAT_BLOB) {
            continue;
        }
        size_t const most = std::min(bytesOf(*output), static_cast<size_t>(result));
        describePicture(output->buffer, most, false, false, *answer.mutable_jpeg());
        return;
    }
}

void describeConfiguration(isphal::ISPStreamConfiguration const& configuration,
                           recording::IspCall& call) {
    for (isphal::ISPStream const& stream : configuration.inputStreams) {
        describeIspStream(stream, *call.add_input_streams());
    }
    for (isphal::ISPStream const& stream : configuration.outputStreams) {
        describeIspStream(stream, *call.add_output_streams());
    }
    call.set_session_settings(configuration.sessionSettings.data(),
                              configuration.sessionSettings.size());
}

void describeRequest(isphal::ISPRequest const& from, recording::IspRequest& request) {
    request.set_number(from.requestNumber);
    request.set_settings(from.settings.data(), from.settings.size());
    for (isphal::ISPBuffer const& buffer : from.inputBuffers) {
        describeIspBuffer(buffer, true, *request.add_inputs());
    }
    for (isphal::ISPBuffer const& buffer : from.outputBuffers) {
        describeIspBuffer(buffer, false, *request.add_outputs());
    }
}

void describeResult(isphal::ISPResult const& result, recording::ResultCall& call) {
    call.set_number(result.reqNumber);
    call.set_status(static_cast<uint32_t>(result.status));
    call.set_metadata(result.resultMetadata.data(), result.resultMetadata.size());
}

void describeNotification(recording::NotifyCall::Kind kind, uint64_t processCall, uint32_t number,
                          vendor::quen::hardware::camera::quenpostproc::V1_0::Status status,
                          android::hardware::hidl_vec<uint8_t> const* metadata,
                          recording::NotifyCall& call) {
    call.set_kind(kind);
    call.set_process_call(processCall);
    call.set_number(number);
    call.set_status(static_cast<uint32_t>(status));
    if (metadata != nullptr) {
        call.set_metadata(metadata->data(), metadata->size());
    }
}

void describeOutput(native_handle const* picture, native_handle const* tuning, bool holdsPictures,
                    recording::IspOutput& output) {
    if (picture != nullptr) {
        describePicture(picture, kAll, true, holdsPictures, *output.mutable_picture());
    }
    if (tuning != nullptr) {
        describeTuning(tuning, *output.mutable_tuning());
    }
}

}  // namespace quen::recorder
