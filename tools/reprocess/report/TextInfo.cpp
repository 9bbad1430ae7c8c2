#include "host/metadata/MetadataText.h"
#include "report/FrameInfo.h"
#include "report/ReportText.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

class TextInfo final : public FrameInfo {
  public:
    void addConfiguration(isphal::ISPStreamConfiguration const& config,
                          isphal::Status status) override {
        mText += configurationText(config, status);
    }

    void addRequest(isphal::ISPRequest const& request, isphal::Status status) override {
        mText += requestText(request, status);
    }

    void addResult(isphal::ISPResult const& result, host::isp::IspReport const& report) override {
        mText += resultText(result, report);
    }

    void addClientResult(ClientInfo const& info) override {
        mText += "client result\n" + indented(host::metadataText(info.metadata));
        if (!info.stored) {
            return;
        }
        mText += format("3A buffer %d\n", info.bufferIndex);
        mText += indented(calibrationHeaderText(info.stored->header));
        if (info.stored->calibration) {
            mText += indented(calibrationText(*info.stored->calibration));
        }
    }

    std::string finish(FrameOutcome const& /*outcome*/, Stopwatch const& watch) override {
        std::string legs;
        for (Stopwatch::Leg const& leg : watch.legs()) {
            legs += format("%-18s %9.2f ms\n", leg.name.c_str(), leg.milliseconds);
        }
        return mText + "time\n" + indented(legs);
    }

  private:
    std::string mText;
};

}  // namespace

std::unique_ptr<FrameInfo> makeTextInfo() {
    return std::make_unique<TextInfo>();
}

}  // namespace quen::reprocess
