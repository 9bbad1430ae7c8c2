#pragma once

#include <cstdint>
#include <memory>

#include "buffers/BackgroundRelease.h"
#include "buffers/ClientBuffer.h"
#include "buffers/Product.h"
#include "client/RequestMetadata.h"
#include "client/RequestOptions.h"
#include "inputs/Capture.h"
#include "report/Report.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * Sends captures through the library: a mosaic through "RAW2YUV", and on through "YUV2JPEG" when a
 * JPEG is wanted; a picture through "YUV2JPEG".
 *
 * One thread at a time in a process: the library hands JPEGs over through process-wide state.
 */
class Reprocessor {
  public:
    /** @param report the ISP's observer */
    Reprocessor(RequestOptions const& options, Report& report);

    /**
     * Makes the product of a capture.
     *
     * @param watch measures the legs
     * @throws Failure, without the input's name
     */
    Product run(Capture const& capture, OutputKind kind, Stopwatch& watch);

  private:
    struct Developed;

    [[noreturn]] void fail(char const* problem) const;
    Developed develop(Capture const& capture, Stopwatch& watch);
    Product encode(ClientBuffer const& picture, Capture const& capture, RequestMetadata& metadata,
                   Stopwatch& watch);

    RequestOptions const& mOptions;
    Report& mReport;
    int32_t mFrameNumber = 0;
    BackgroundRelease mDone;  // buffers no longer in use
};

}  // namespace quen::reprocess
