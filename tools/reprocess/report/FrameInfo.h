#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <system/camera_metadata.h>

#include "buffers/ThreeABuffer.h"
#include "host/isp/device/IspObserver.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;

/** How --info tells what it tells. */
enum class InfoFormat { None, Text, Json };

/** What became of an input. */
struct FrameOutcome {
    std::string input;
    std::string output;
    uint32_t width = 0;
    uint32_t height = 0;
    size_t outputBytes = 0;
    double seconds = 0;
    std::string problem;  ///< empty when all went well
    std::vector<std::string> notes;
    bool isSkipped = false;
    std::optional<std::array<double, 4>> psnr;  ///< dB: all channels, red, green, blue
};

/** What became of all inputs. */
struct RunSummary {
    size_t inputs = 0;
    size_t reprocessed = 0;
    size_t failed = 0;
    size_t skipped = 0;   ///< for their outputs were there
    size_t notBegun = 0;  ///< for the run was interrupted
    double seconds = 0;
};

/** What a client got with a result. */
struct ClientInfo {
    camera_metadata const* metadata;
    int32_t bufferIndex;                      ///< of its 3A buffer
    std::optional<StoredCalibration> stored;  ///< in that; none when there is no such buffer
};

/** What --info tells of one input: what the ISP is given and gives back. Not thread-safe. */
class FrameInfo {
  public:
    virtual ~FrameInfo() = default;

    virtual void addConfiguration(isphal::ISPStreamConfiguration const& config,
                                  isphal::Status status) = 0;
    virtual void addRequest(isphal::ISPRequest const& request, isphal::Status status) = 0;
    virtual void addResult(isphal::ISPResult const& result, host::isp::IspReport const& report) = 0;
    virtual void addClientResult(ClientInfo const& info) = 0;

    /** All that was added, with the outcome and the times of the legs. */
    virtual std::string finish(FrameOutcome const& outcome, Stopwatch const& watch) = 0;
};

/** As indented lines; the outcome is told elsewhere. */
std::unique_ptr<FrameInfo> makeTextInfo();

/** As a JSON object; docs/info-json.md describes it. */
std::unique_ptr<FrameInfo> makeJsonInfo();

/** As a JSON object. */
std::string summaryJson(RunSummary const& summary);

}  // namespace quen::reprocess
