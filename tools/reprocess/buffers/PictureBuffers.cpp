#include "buffers/PictureBuffers.h"

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

#include <system/graphics.h>

#include "buffers/YuvPlanes.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

/** What a picture without EXIF cannot say itself: how it is to be turned for viewing. */
std::string turnNote(Capture const& capture) {
    if (capture.orientation == 0 && !capture.mirrored) {
        return {};
    }
    std::string const turn = format("turned by %d degrees clockwise", capture.orientation);
    return "is as the sensor saw it, and YUV cannot say that it is to be " +
           (capture.orientation == 0 ? "" : turn) +
           (capture.orientation != 0 && capture.mirrored ? ", then " : "") +
           (capture.mirrored ? "mirrored left to right" : "");
}

}  // namespace

void fillRaw(ClientBuffer const& buffer, Capture const& capture, RawTarget target) {
    auto const planes = buffer.planes();
    if (planes.size() != 1) {
        throw Failure("cannot be handed on: a raw buffer has an unexpected layout");
    }
    auto const lock = buffer.lock();
    writeBayerRows(std::get<BayerImage>(capture.image), capture.calibration.levelBits,
                   capture.width, capture.height, target, lock.data() + planes[0].offsetInBytes,
                   static_cast<size_t>(planes[0].strideInBytes));
}

std::unique_ptr<ClientBuffer> packedPicture(Capture const& capture, BufferPool& pool) {
    return pool.take(static_cast<uint32_t>(nv21Size(capture.width, capture.height)), 1,
                     HAL_PIXEL_FORMAT_BLOB);
}

std::unique_ptr<ClientBuffer> asPackedPicture(std::unique_ptr<ClientBuffer> picture,
                                              Capture const& capture, BufferPool& pool) {
    std::unique_ptr<ClientBuffer> packed;
    {
        auto const from = picture->lock();
        YuvPlanes const planes = yuvPlanes(*picture, from.data());
        if (isPackedNv21(planes, capture.width, capture.height, from.data())) {
            return picture;
        }
        if (canPackInPlace(planes, capture.width, capture.height, from.data())) {
            packNv21(planes, capture.width, capture.height, from.data());
            return picture;
        }
        packed = packedPicture(capture, pool);
        auto const to = packed->lock();
        packNv21(planes, capture.width, capture.height, to.data());
    }
    pool.give(std::move(picture));
    return packed;
}

Product packPlanes(ClientBuffer const& picture, Capture const& capture, OutputKind kind) {
    auto const packed =
            std::make_shared<std::vector<uint8_t>>(nv21Size(capture.width, capture.height));
    auto const lock = picture.lock();
    auto* const pack = kind == OutputKind::Nv21 ? packNv21 : packI420;
    pack(yuvPlanes(picture, lock.data()), capture.width, capture.height, packed->data());
    return {{packed->data(), packed->size()}, packed, turnNote(capture), {}};
}

Product uprightPlanes(ClientBuffer const& picture, Capture const& capture) {
    auto const packed =
            std::make_shared<std::vector<uint8_t>>(nv21Size(capture.width, capture.height));
    auto const lock = picture.lock();
    packUprightI420(yuvPlanes(picture, lock.data()), capture.width, capture.height,
                    capture.orientation, capture.mirrored, packed->data());
    PlanesToWrite planes{capture.width, capture.height, capture.exif};
    if (capture.orientation % 180 != 0) {
        std::swap(planes.width, planes.height);
    }
    return {{packed->data(), packed->size()}, packed, {}, std::move(planes)};
}

}  // namespace quen::reprocess
