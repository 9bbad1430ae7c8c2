#include "report/Report.h"

#include "buffers/ThreeABuffer.h"
#include "host/metadata/MetadataText.h"
#include "report/ReportText.h"
#include "support/Text.h"

namespace quen::reprocess {

void Report::begin() {
    host::MutexLock const lock(mLock);
    mOutcome = Outcome::None;
    mStatus = Status::OK;
}

Report::Outcome Report::outcome() const {
    host::MutexLock const lock(mLock);
    return mOutcome;
}

std::string Report::problem() const {
    host::MutexLock const lock(mLock);
    if (mStatus == Status::OK) {
        return {};
    }
    return std::string("the ISP ") + (mOutcome == Outcome::Refused ? "refused it" : "failed") +
           " with " + toString(mStatus);
}

void Report::addClientResult(camera_metadata const* metadata, int32_t tuningIndex) {
    if (!mDetailed) {
        return;
    }
    std::string text = "client result\n" + indented(host::metadataText(metadata));
    if (auto const tuning = readCalibration(tuningIndex)) {
        text += format("3A buffer %d\n", tuningIndex);
        text += indented(calibrationHeaderText(tuning->header));
        if (tuning->calibration) {
            text += indented(calibrationText(*tuning->calibration));
        }
    }
    addText(text);
}

std::string Report::take(Stopwatch const& watch) {
    if (!mDetailed) {
        return {};
    }
    std::string legs;
    for (Stopwatch::Leg const& leg : watch.legs()) {
        legs += format("%-18s %9.2f ms\n", leg.name.c_str(), leg.milliseconds);
    }
    host::MutexLock const lock(mLock);
    std::string text = std::move(mText) + "time\n" + indented(legs);
    mText.clear();
    return text;
}

void Report::onConfigured(ISPStreamConfiguration const& config, Status status) {
    if (mDetailed) {
        addText(configurationText(config, status));
    }
}

void Report::onRequest(ISPRequest const& request, Status status) {
    setOutcome(status == Status::OK ? Outcome::Accepted : Outcome::Refused, status);
    if (mDetailed) {
        addText(requestText(request, status));
    }
}

void Report::onResult(ISPResult const& result, host::isp::IspReport const& report) {
    setOutcome(Outcome::Finished, result.status);
    if (mDetailed) {
        addText(resultText(result, report));
    }
}

void Report::setOutcome(Outcome outcome, Status status) {
    host::MutexLock const lock(mLock);
    // The result may arrive before the submission is reported.
    if (outcome == Outcome::Accepted && mOutcome == Outcome::Finished) {
        return;
    }
    mOutcome = outcome;
    mStatus = status;
}

void Report::addText(std::string const& text) {
    host::MutexLock const lock(mLock);
    mText += text;
}

}  // namespace quen::reprocess
