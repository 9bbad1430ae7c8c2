#include "report/Report.h"

#include "buffers/ThreeABuffer.h"
#include "host/metadata/MetadataText.h"
#include "report/ReportText.h"
#include "support/Text.h"

namespace quen::reprocess {

void Report::begin(uint32_t frame) {
    host::MutexLock const lock(mLock);
    mBegun = frame;
    Frame& state = mFrames[frame];
    state.outcome = Outcome::None;
    state.status = Status::OK;
    state.problem.clear();
}

Report::Outcome Report::outcome(uint32_t frame) const {
    return frameOf(frame).outcome;
}

std::string Report::problem(uint32_t frame) const {
    Frame const state = frameOf(frame);
    if (state.status == Status::OK) {
        return {};
    }
    return std::string("the ISP ") + (state.outcome == Outcome::Refused ? "refused it" : "failed") +
           " with " + toString(state.status) + (state.problem.empty() ? "" : ": " + state.problem);
}

void Report::addClientResult(uint32_t frame, camera_metadata const* metadata, int32_t tuningIndex) {
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
    addText(frame, text);
}

std::string Report::take(uint32_t frame, Stopwatch const& watch) {
    Frame const state = frameOf(frame);
    {
        host::MutexLock const lock(mLock);
        mFrames.erase(frame);
    }
    if (!mDetailed) {
        return {};
    }
    std::string legs;
    for (Stopwatch::Leg const& leg : watch.legs()) {
        legs += format("%-18s %9.2f ms\n", leg.name.c_str(), leg.milliseconds);
    }
    return state.text + "time\n" + indented(legs);
}

void Report::onConfigured(ISPStreamConfiguration const& config, Status status,
                          std::string const& /*problem*/) {
    if (mDetailed) {
        host::MutexLock const lock(mLock);
        mFrames[mBegun].text += configurationText(config, status);
    }
}

void Report::onRequest(ISPRequest const& request, Status status, std::string const& problem) {
    setOutcome(request.requestNumber, status == Status::OK ? Outcome::Accepted : Outcome::Refused,
               status, problem);
    if (mDetailed) {
        addText(request.requestNumber, requestText(request, status));
    }
}

void Report::onResult(ISPResult const& result, host::isp::IspReport const& report) {
    setOutcome(result.reqNumber, Outcome::Finished, result.status, report.problem);
    if (mDetailed) {
        addText(result.reqNumber, resultText(result, report));
    }
}

Report::Frame Report::frameOf(uint32_t number) const {
    host::MutexLock const lock(mLock);
    auto const found = mFrames.find(number);
    return found == mFrames.end() ? Frame() : found->second;
}

void Report::setOutcome(uint32_t frame, Outcome outcome, Status status,
                        std::string const& problem) {
    host::MutexLock const lock(mLock);
    Frame& state = mFrames[frame];
    // The result may arrive before the submission is reported.
    if (outcome == Outcome::Accepted && state.outcome == Outcome::Finished) {
        return;
    }
    state.outcome = outcome;
    state.status = status;
    state.problem = problem;
}

void Report::addText(uint32_t frame, std::string const& text) {
    host::MutexLock const lock(mLock);
    mFrames[frame].text += text;
}

}  // namespace quen::reprocess
