#include "client/Reprocessor.h"

#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include <system/graphics.h>

#include "buffers/PictureBuffers.h"
#include "buffers/ThreeABuffer.h"
#include "client/DeviceSession.h"
#include "support/Failure.h"

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

/** Buffer sizes are int32 in a request. */
void checkSize(Capture const& capture) {
    size_t const largest = size_t{3} * capture.width * capture.height + (1 << 20);
    if (largest > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        throw Failure("is too large: " + std::to_string(capture.width) + "x" +
                              std::to_string(capture.height),
                      "a request carries buffers of up to 2 GiB");
    }
}

/** The raw format of a capture, of the depth that the library requests from the ISP for it. */
RawTarget rawTarget(Capture const& capture, RequestOptions const& options,
                    RequestMetadata const& metadata) {
    bool const fitsRaw10 = capture.calibration.levelBits <= 10 && capture.width % 4 == 0;
    if (fitsRaw10 && !options.raw16) {
        return {false, 10};
    }
    bool const plain = metadata.int32At(kTagCurrentUiMode) == kUiModeWithout14Bits;
    return {true, plain ? 10 : 14};
}

}  // namespace

/** The result of "RAW2YUV": the picture, and metadata with the index of its 3A buffer. */
struct Reprocessor::Developed {
    std::unique_ptr<ClientBuffer> picture;
    RequestMetadata metadata;
};

Reprocessor::Reprocessor(RequestOptions const& options, Report& report)
    : mOptions(options), mReport(report) {}

Product Reprocessor::run(Capture const& capture, OutputKind kind, Stopwatch& watch) {
    checkSize(capture);
    ++mFrameNumber;
    if (std::holds_alternative<BayerImage>(capture.image)) {
        Developed developed = develop(capture, watch);
        if (kind != OutputKind::Jpeg) {
            return watch.time("copy picture",
                              [&] { return packPlanes(*developed.picture, capture, kind); });
        }
        auto packed = watch.time("copy picture", [&] {
            return asPackedPicture(std::move(developed.picture), capture);
        });
        Product product = encode(*packed, capture, developed.metadata, watch);
        mDone.release(std::move(packed));
        return product;
    }

    if (kind != OutputKind::Jpeg) {
        throw Failure("is no raw frame, and only those are developed to YUV",
                      "make it a .jpg, or name a raw input");
    }
    RequestMetadata metadata(mOptions, capture.orientation, mFrameNumber);
    auto const packed = packedPicture(capture);
    watch.time("copy picture", [&] {
        auto const to = packed->lock();
        std::memcpy(to.data(), std::get<Nv21Image>(capture.image).bytes,
                    nv21Size(capture.width, capture.height));
    });
    return encode(*packed, capture, metadata, watch);
}

void Reprocessor::fail(char const* problem) const {
    std::string reason = mReport.problem();
    if (reason.empty() && mReport.outcome() == Report::Outcome::Finished) {
        reason = "the ISP answered, but no usable picture came back";
    }
    if (!reason.empty()) {
        throw Failure(std::string(problem) + ": " + reason,
                      "see what the ISP was given with --info, or why with --log info");
    }
    throw Failure(std::string(problem) + " within " + std::to_string(mOptions.timeoutSeconds) +
                          " seconds",
                  "give it longer with --timeout, or see why with --log info");
}

Reprocessor::Developed Reprocessor::develop(Capture const& capture, Stopwatch& watch) {
    RequestMetadata metadata(mOptions, capture.orientation, mFrameNumber);
    RawTarget const target = rawTarget(capture, mOptions, metadata);
    int32_t const format = target.raw16 ? HAL_PIXEL_FORMAT_RAW16 : HAL_PIXEL_FORMAT_RAW10;
    auto raw = std::make_unique<ClientBuffer>(capture.width, capture.height, format);
    watch.time("fill raw buffer", [&] { fillRaw(*raw, capture, target); });
    metadata.setInt32(kTagThreeAIndex, publishCalibration(capture.calibration, mFrameNumber));

    auto picture = std::make_unique<ClientBuffer>(capture.width, capture.height,
                                                  HAL_PIXEL_FORMAT_YCBCR_420_888);
    ImageBuffer const input = imageBuffer(kInputStream, format, raw->size(), capture, *raw);
    ImageBuffer const output = imageBuffer(kOutputStream, HAL_PIXEL_FORMAT_YCBCR_420_888,
                                           picture->size(), capture, *picture);
    std::optional<ClientResult> result;
    mReport.begin();
    {
        DeviceSession session(input, output, metadata, watch);
        session.submit(mFrameNumber);
        // The library does not report a refusal: no result would come.
        if (mReport.outcome() != Report::Outcome::Refused) {
            result = session.wait(mOptions.timeoutSeconds);
        }
    }
    mDone.release(std::move(raw));
    if (!result || result->status != ResultWaiter::Status::OK) {
        fail("was not developed");
    }
    mReport.addClientResult(result->metadata.get(),
                            findInt32(result->metadata.get(), kTagThreeAIndex).value_or(-1));
    return {std::move(picture), std::move(metadata)};
}

Product Reprocessor::encode(ClientBuffer const& picture, Capture const& capture,
                            RequestMetadata& metadata, Stopwatch& watch) {
    // More than any JPEG of the size takes; pages never written cost nothing.
    uint32_t const size = 3 * capture.width * capture.height + (1 << 16);
    auto const jpeg = std::make_shared<ClientBuffer>(size, 1, HAL_PIXEL_FORMAT_BLOB);
    ImageBuffer const input =
            imageBuffer(kInputStream, HAL_PIXEL_FORMAT_YCBCR_420_888,
                        nv21Size(capture.width, capture.height), capture, picture);
    ImageBuffer const output =
            imageBuffer(kOutputStream, HAL_PIXEL_FORMAT_BLOB, size, capture, *jpeg);
    int made = 0;
    mReport.begin();
    {
        DeviceSession session(input, output, metadata, watch);
        made = session.processAndWait(mFrameNumber);
    }
    struct Held {
        std::shared_ptr<ClientBuffer> buffer;
        ClientBuffer::Lock lock;
    };
    auto const held = std::make_shared<Held>(Held{jpeg, jpeg->lock()});
    uint8_t const* const bytes = held->lock.data();
    if (made < 4 || static_cast<uint32_t>(made) > size || bytes[0] != 0xff || bytes[1] != 0xd8) {
        fail("was not encoded");
    }
    return {{bytes, static_cast<size_t>(made)}, held};
}

}  // namespace quen::reprocess
