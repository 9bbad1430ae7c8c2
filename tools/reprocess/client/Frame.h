#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "buffers/ClientBuffer.h"
#include "buffers/Product.h"
#include "client/DeviceSession.h"
#include "client/RequestMetadata.h"
#include "inputs/Capture.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/** A capture between its file and its product: see Reprocessor. Stays where it is made. */
struct Frame {
    Frame(uint32_t frameNumber, OutputKind outputKind, RequestMetadata requestMetadata,
          Stopwatch& stopwatch)
        : number(frameNumber),
          kind(outputKind),
          metadata(std::move(requestMetadata)),
          watch(stopwatch) {}
    Frame(Frame const&) = delete;
    Frame& operator=(Frame const&) = delete;

    uint32_t const number;  ///< of its requests; no other frame in work has it
    OutputKind const kind;
    RequestMetadata metadata;  ///< of all of its requests
    Stopwatch& watch;
    Capture capture;                            ///< without its samples, which are in `input`
    int32_t rawFormat = 0;                      ///< of a mosaic's buffer
    std::unique_ptr<ClientBuffer> input;        ///< the mosaic, or the packed picture
    std::unique_ptr<ClientBuffer> picture;      ///< what is made of a mosaic
    std::unique_ptr<DeviceSession> developing;  ///< from `submit` to the result
};

}  // namespace quen::reprocess
