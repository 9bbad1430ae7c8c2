#include "client/Reprocessor.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include <system/graphics.h>

#include "buffers/JpegHead.h"
#include "buffers/PictureBuffers.h"
#include "buffers/ThreeABuffer.h"
#include "client/DeviceSession.h"
#include "host/isp/buffers/IspLimits.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

constexpr int32_t kInputStream = 0;
constexpr int32_t kOutputStream = 1;
constexpr int32_t kUiModeWithout14Bits = 16;

/** Describes a buffer with a picture of the capture's size for a request. */
ImageBuffer imageBuffer(int32_t streamId, int32_t format, size_t size, Capture const& capture,
                        ClientBuffer const& buffer) {
    ImageBuffer image;
    image.streamId = streamId;
    image.format = format;
    image.size = static_cast<int32_t>(size);
    image.width = static_cast<int32_t>(capture.width);
    image.height = static_cast<int32_t>(capture.height);
    image.buffer = buffer.handle();
    return image;
}

/**
 * Refuses a picture that no request can carry, before the ISP is asked: a configuration that it
 * refuses ends the process.
 */
void checkSize(Capture const& capture) {
    auto const [shorter, longer] = std::minmax(capture.width, capture.height);
    if (shorter < host::isp::kSmallestInputSide || longer > host::isp::kLargestSide) {
        throw Failure(
                format("is %ux%u pixels, and the ISP takes sides of %d to %d", capture.width,
                       capture.height, host::isp::kSmallestInputSide, host::isp::kLargestSide),
                "crop or scale it with other means first");
    }
    // Buffer sizes are int32 in a request.
    size_t const largest =
            size_t{3} * capture.width * capture.height + (1 << 20) + jpegHeadBytes(capture);
    if (largest > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        throw Failure("is too large: " + std::to_string(capture.width) + "x" +
                              std::to_string(capture.height),
                      "a request carries buffers of up to 2 GiB");
    }
}

/** The raw format of a capture, of the depth that the library requests from the ISP for it. */
RawTarget rawTarget(Capture const& capture, RequestOptions const& options,
                    RequestMetadata const& metadata) {
    bool const fitsRaw10 =
            capture.calibration.levelBits <= 10 && capture.width % host::isp::kPackedGroup == 0;
    if (fitsRaw10 && !options.raw16) {
        return {false, 10};
    }
    bool const plain = metadata.int32At(kTagCurrentUiMode) == kUiModeWithout14Bits;
    return {true, plain ? 10 : 14};
}

/** A JPEG in its buffer, which goes back to the pool. */
class HeldJpeg {
  public:
    HeldJpeg(std::shared_ptr<BufferPool> pool, std::unique_ptr<ClientBuffer> buffer)
        : mPool(std::move(pool)), mBuffer(std::move(buffer)), mLock(mBuffer->lock()) {}
    ~HeldJpeg() {
        mLock.reset();
        mPool->give(std::move(mBuffer));
    }
    HeldJpeg(HeldJpeg const&) = delete;
    HeldJpeg& operator=(HeldJpeg const&) = delete;

    uint8_t* data() const { return mLock->data(); }

  private:
    std::shared_ptr<BufferPool> const mPool;
    std::unique_ptr<ClientBuffer> mBuffer;
    std::optional<ClientBuffer::Lock> mLock;
};

}  // namespace

Reprocessor::Reprocessor(RequestOptions const& options, Report& report, size_t keptBuffers)
    : mOptions(options), mReport(report), mPool(std::make_shared<BufferPool>(keptBuffers)) {}

Product Reprocessor::run(Capture capture, OutputKind kind, Stopwatch& watch) {
    auto const frame = prepare(1, std::move(capture), kind, watch);
    submit(*frame);
    return finish(*frame);
}

std::unique_ptr<Frame> Reprocessor::prepare(uint32_t number, Capture capture, OutputKind kind,
                                            Stopwatch& watch) {
    checkSize(capture);
    auto frame = std::make_unique<Frame>(
            number, kind,
            RequestMetadata(mOptions, capture.orientation, static_cast<int32_t>(number)), watch);
    if (std::holds_alternative<BayerImage>(capture.image)) {
        prepareMosaic(*frame, capture);
    } else {
        preparePicture(*frame, capture);
    }
    capture.image = BayerImage();
    capture.memory = nullptr;
    frame->capture = std::move(capture);
    return frame;
}

void Reprocessor::prepareMosaic(Frame& frame, Capture const& capture) {
    RawTarget const target = rawTarget(capture, mOptions, frame.metadata);
    frame.rawFormat = target.raw16 ? HAL_PIXEL_FORMAT_RAW16 : HAL_PIXEL_FORMAT_RAW10;
    frame.input = mPool->take(capture.width, capture.height, frame.rawFormat);
    frame.watch.time("fill raw buffer", [&] { fillRaw(*frame.input, capture, target); });
}

void Reprocessor::preparePicture(Frame& frame, Capture const& capture) {
    if (frame.kind != OutputKind::Jpeg) {
        throw Failure("is no raw frame, and only those are developed to YUV or RGB",
                      "make it a .jpg, or name a raw input");
    }
    frame.input = packedPicture(capture, *mPool);
    frame.watch.time("copy picture", [&] {
        auto const to = frame.input->lock();
        std::memcpy(to.data(), std::get<Nv21Image>(capture.image).bytes,
                    nv21Size(capture.width, capture.height));
    });
}

/** Whether the ISP has refused the frame's request, or has answered it. */
bool Reprocessor::isAnswered(Frame const& frame) const {
    Report::Outcome const outcome = mReport.outcome(frame.number);
    return outcome == Report::Outcome::Refused || outcome == Report::Outcome::Finished;
}

/** @param isAnswered when the wait ended: a late answer comes until the device object has ended */
void Reprocessor::fail(Frame const& frame, char const* problem, bool isAnswered) const {
    if (isAnswered) {
        std::string const reason = mReport.problem(frame.number);
        throw Failure(std::string(problem) + ": " +
                              (reason.empty() ? "the ISP answered, but no usable picture came back"
                                              : reason),
                      "see what the ISP was given with --info");
    }
    throw Failure(std::string(problem) + " within " + std::to_string(mOptions.timeoutSeconds) +
                          " seconds",
                  "give it longer with --timeout, or see why with --log info");
}

void Reprocessor::submit(Frame& frame) {
    if (frame.rawFormat == 0) {
        return;
    }
    Capture const& capture = frame.capture;
    int32_t const number = static_cast<int32_t>(frame.number);
    frame.metadata.setInt32(kTagThreeAIndex, publishCalibration(capture.calibration, number));
    frame.picture = mPool->take(capture.width, capture.height, HAL_PIXEL_FORMAT_YCBCR_420_888);
    ImageBuffer const input =
            imageBuffer(kInputStream, frame.rawFormat, frame.input->size(), capture, *frame.input);
    ImageBuffer const output = imageBuffer(kOutputStream, HAL_PIXEL_FORMAT_YCBCR_420_888,
                                           frame.picture->size(), capture, *frame.picture);
    mReport.begin(frame.number);
    frame.developing = std::make_unique<DeviceSession>(input, output, frame.metadata, frame.watch);
    frame.developing->submit(number);
}

Product Reprocessor::finish(Frame& frame) {
    if (!frame.developing) {
        // The library calls a request without a 3A buffer an error, though nothing in this one is
        // needed to encode.
        frame.metadata.setInt32(
                kTagThreeAIndex,
                publishCalibration(frame.capture.calibration, static_cast<int32_t>(frame.number)));
        return encode(frame, std::move(frame.input));
    }
    awaitDeveloped(frame);
    if (frame.kind != OutputKind::Jpeg) {
        Product product = frame.watch.time("copy picture", [&] {
            return isRgb(frame.kind) ? uprightPlanes(*frame.picture, frame.capture)
                                     : packPlanes(*frame.picture, frame.capture, frame.kind);
        });
        mPool->give(std::move(frame.picture));
        return product;
    }
    auto packed = frame.watch.time("copy picture", [&] {
        return asPackedPicture(std::move(frame.picture), frame.capture, *mPool);
    });
    return encode(frame, std::move(packed));
}

/** Waits until a mosaic is developed. */
void Reprocessor::awaitDeveloped(Frame& frame) {
    std::optional<ClientResult> result;
    // The library does not report a refusal: no result would come.
    if (mReport.outcome(frame.number) != Report::Outcome::Refused) {
        result = frame.developing->wait(mOptions.timeoutSeconds);
    }
    bool const hasAnswer = isAnswered(frame);
    frame.developing = nullptr;
    mPool->give(std::move(frame.input));
    if (!result || result->status != ResultWaiter::Status::OK) {
        fail(frame, "was not developed", hasAnswer);
    }
    mReport.addClientResult(frame.number, result->metadata.get(),
                            findInt32(result->metadata.get(), kTagThreeAIndex).value_or(-1));
}

Product Reprocessor::encode(Frame& frame, std::unique_ptr<ClientBuffer> picture) {
    Capture const& capture = frame.capture;
    // More than any JPEG of the size takes; pages never written cost nothing.
    uint32_t const size = 3 * capture.width * capture.height + (1 << 17) +
                          static_cast<uint32_t>(jpegHeadBytes(capture));
    auto jpeg = mPool->take(size, 1, HAL_PIXEL_FORMAT_BLOB);
    ImageBuffer const input =
            imageBuffer(kInputStream, HAL_PIXEL_FORMAT_YCBCR_420_888,
                        nv21Size(capture.width, capture.height), capture, *picture);
    ImageBuffer const output =
            imageBuffer(kOutputStream, HAL_PIXEL_FORMAT_BLOB, size, capture, *jpeg);
    int made = 0;
    bool hasAnswer = false;
    mReport.begin(frame.number);
    {
        DeviceSession session(input, output, frame.metadata, frame.watch);
        made = session.processAndWait(static_cast<int32_t>(frame.number));
        hasAnswer = isAnswered(frame);
    }
    mPool->give(std::move(picture));
    auto const held = std::make_shared<HeldJpeg>(mPool, std::move(jpeg));
    uint8_t* const bytes = held->data();
    if (made < 4 || static_cast<uint32_t>(made) > size || bytes[0] != 0xff || bytes[1] != 0xd8) {
        fail(frame, "was not encoded", hasAnswer);
    }
    size_t const finished = frame.watch.time(
            "EXIF", [&] { return finishJpeg(bytes, static_cast<size_t>(made), size, capture); });
    return {{bytes, finished}, held, {}, {}};
}

}  // namespace quen::reprocess
