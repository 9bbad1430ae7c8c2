#pragma once

#include <cstdint>
#include <memory>

#include "buffers/BufferPool.h"
#include "buffers/ClientBuffer.h"
#include "buffers/Product.h"
#include "client/Frame.h"
#include "client/RequestOptions.h"
#include "inputs/Capture.h"
#include "report/Report.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * Sends captures through the library: a mosaic through "RAW2YUV", and on through "YUV2JPEG" when a
 * JPEG is wanted; a picture through "YUV2JPEG".
 *
 * A frame passes `prepare`, `submit` and `finish`, in this order. Between its submission and its
 * end others may be submitted: they are developed beside it. `prepare` may run on any thread,
 * several at a time. All other calls come from one thread at a time in a process, the library's
 * client: it hands JPEGs over through process-wide state, and numbers requests through some.
 */
class Reprocessor {
  public:
    /**
     * @param report the ISP's observer
     * @param keptBuffers buffers to keep for further frames
     */
    Reprocessor(RequestOptions const& options, Report& report, size_t keptBuffers);

    /** Makes the product of a single capture. @throws Failure, without the input's name */
    Product run(Capture capture, OutputKind kind, Stopwatch& watch);

    /**
     * Makes a frame of a capture: its samples are in a buffer.
     *
     * @param number unlike that of any other frame in work
     * @param watch measures the frame's legs; must outlive it
     * @throws Failure, without the input's name
     */
    std::unique_ptr<Frame> prepare(uint32_t number, Capture capture, OutputKind kind,
                                   Stopwatch& watch);

    /** Has a mosaic developed; does not wait. @throws Failure, without the input's name */
    void submit(Frame& frame);

    /**
     * Makes the product of a submitted frame; waits.
     *
     * @throws Failure, without the input's name
     */
    Product finish(Frame& frame);

  private:
    bool isAnswered(Frame const& frame) const;
    [[noreturn]] void fail(Frame const& frame, char const* problem, bool isAnswered) const;
    void prepareMosaic(Frame& frame, Capture const& capture);
    void preparePicture(Frame& frame, Capture const& capture);
    void awaitDeveloped(Frame& frame);
    Product encode(Frame& frame, std::unique_ptr<ClientBuffer> picture);

    RequestOptions const& mOptions;
    Report& mReport;
    std::shared_ptr<BufferPool> const mPool;  // shared with the products
};

}  // namespace quen::reprocess
