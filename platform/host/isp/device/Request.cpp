#include "host/isp/device/Request.h"

#include <algorithm>
#include <optional>
#include <utility>

using android::sp;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;

namespace quen::host::isp {

namespace {

constexpr int kPackedBits = 10;
constexpr int kRgbBits = 16;
constexpr int kDefaultWordBits = 10;
constexpr size_t kSmallestBlock = 9;  // a trailer and one byte

/** Locates the stream's image in the buffer. @return false when the buffer does not hold it */
bool locate(RequestImage& image) {
    Stream const& stream = image.stream;
    switch (stream.kind) {
        case StreamKind::Raw: {
            std::optional<RawRows> const rows =
                    findRaw(image.buffer, rawRowBytes(stream.rawLayout, stream.width),
                            stream.height, stream.firstStride);
            image.raw = rows.value_or(RawRows());
            return rows.has_value();
        }
        case StreamKind::Yuv: {
            std::optional<YuvLayout> const layout =
                    findYuv(image.buffer, stream.width, stream.height);
            image.yuv = layout.value_or(YuvLayout());
            return layout.has_value();
        }
        case StreamKind::Jpeg:
            image.blockBytes = findBlock(image.buffer).value_or(0);
            return image.blockBytes >= kSmallestBlock;
    }
    return false;
}

/** A stream in words: "stream 3 of 64x48". */
std::string streamText(Stream const& stream) {
    return "stream " + std::to_string(stream.id) + " of " + std::to_string(stream.width) + "x" +
           std::to_string(stream.height);
}

/** Imports a buffer with its tuning buffer, and locates the image in it. */
Status readImage(ISPBuffer const& buffer, Stream const& stream,
                 sp<GraphicBuffer::IMapper> const& mapper, RequestImage& image,
                 std::string& problem) {
    image.stream = stream;
    Status status = image.buffer.import(mapper, buffer.buffer.getNativeHandle());
    if (status != Status::OK) {
        problem = "the buffer for " + streamText(stream) + " cannot be imported";
        return status;
    }
    if (!locate(image)) {
        problem = "the buffer for " + streamText(stream) + " holds no picture of its size";
        return Status::ILLEGAL_ARGUMENT;
    }
    status = image.calibration.open(mapper, buffer.tuningData.getNativeHandle());
    if (status != Status::OK) {
        problem = "the tuning data beside " + streamText(stream) + " cannot be opened";
    }
    return status;
}

/** Clips a rectangle to the input. @return false when nothing is left */
bool clip(PixelRect const& wanted, Stream const& input, PixelRect& crop) {
    // 64 bits: the far corner of the rectangle may not fit an int.
    int64_t const left = std::max<int64_t>(wanted.x, 0);
    int64_t const top = std::max<int64_t>(wanted.y, 0);
    int64_t const right = std::min<int64_t>(int64_t{wanted.x} + wanted.width, input.width);
    int64_t const bottom = std::min<int64_t>(int64_t{wanted.y} + wanted.height, input.height);
    if (right <= left || bottom <= top) {
        return false;
    }
    crop = {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
            static_cast<int>(bottom - top)};
    if (input.kind == StreamKind::Yuv) {
        crop.x -= crop.x % 2;
        crop.y -= crop.y % 2;
    }
    return true;
}

/** Depth of raw samples: fixed by the layout, else set by the request or the session. */
int rawBitsOf(Stream const& input, RequestSettings const& request, RequestSettings const& session) {
    if (input.rawLayout == RawLayout::Packed10) {
        return kPackedBits;
    }
    if (input.rawLayout == RawLayout::Rgb48) {
        return kRgbBits;
    }
    return request.rawBits.value_or(session.rawBits.value_or(kDefaultWordBits));
}

}  // namespace

Status readRequest(ISPRequest const& request,
                   std::shared_ptr<IspConfiguration const> const& configuration,
                   sp<GraphicBuffer::IMapper> const& mapper, Request& result,
                   std::string& problem) {
    result.number = request.requestNumber;
    result.configuration = configuration;
    if (request.inputBuffers.size() != 1 || request.outputBuffers.size() == 0) {
        problem = "it has not one input and an output or more";
        return Status::ILLEGAL_ARGUMENT;
    }
    if (!parseSettings(request.settings, result.settings, &problem)) {
        return Status::ILLEGAL_ARGUMENT;
    }
    ISPBuffer const& input = request.inputBuffers[0];
    Stream const* const inputStream = findStream(configuration->inputs, input.streamId);
    std::vector<Stream const*> outputStreams;
    for (ISPBuffer const& output : request.outputBuffers) {
        outputStreams.push_back(findStream(configuration->outputs, output.streamId));
    }
    if (inputStream == nullptr ||
        std::count(outputStreams.begin(), outputStreams.end(), nullptr) != 0) {
        problem = "a buffer is of a stream that is not configured";
        return Status::REQUEST_STREAM_ID_ERROR;
    }
    PixelRect const all{0, 0, inputStream->width, inputStream->height};
    PixelRect const wanted =
            result.settings.crop.value_or(configuration->settings.crop.value_or(all));
    if (!clip(wanted, *inputStream, result.crop)) {
        problem = "the crop lies outside " + streamText(*inputStream);
        return Status::ILLEGAL_ARGUMENT;
    }
    result.rawBits = rawBitsOf(*inputStream, result.settings, configuration->settings);

    Status status = readImage(input, *inputStream, mapper, result.input, problem);
    for (size_t i = 0; i < outputStreams.size() && status == Status::OK; ++i) {
        RequestImage image;
        status = readImage(request.outputBuffers[i], *outputStreams[i], mapper, image, problem);
        result.outputs.push_back(std::move(image));
    }
    return status;
}

}  // namespace quen::host::isp
