#include "report/Report.h"

#include "buffers/ThreeABuffer.h"

namespace quen::reprocess {

void Report::begin(uint32_t frame) {
    host::MutexLock const lock(mLock);
    mBegun = frame;
    mFrames[frame].answer = Answer();
}

Report::Outcome Report::outcome(uint32_t frame) const {
    return answerOf(frame).outcome;
}

std::string Report::problem(uint32_t frame) const {
    Answer const state = answerOf(frame);
    if (state.status == Status::OK) {
        return {};
    }
    return std::string("the ISP ") + (state.outcome == Outcome::Refused ? "refused it" : "failed") +
           " with " + toString(state.status) + (state.problem.empty() ? "" : ": " + state.problem);
}

void Report::addClientResult(uint32_t frame, camera_metadata const* metadata, int32_t tuningIndex) {
    if (mFormat == InfoFormat::None) {
        return;
    }
    ClientInfo const info{metadata, tuningIndex, readCalibration(tuningIndex)};
    host::MutexLock const lock(mLock);
    infoLocked(frame).addClientResult(info);
}

std::string Report::take(uint32_t frame, FrameOutcome const& outcome, Stopwatch const& watch) {
    host::MutexLock const lock(mLock);
    std::string text;
    if (mFormat != InfoFormat::None) {
        text = infoLocked(frame).finish(outcome, watch);
    }
    mFrames.erase(frame);
    return text;
}

void Report::onConfigured(ISPStreamConfiguration const& config, Status status,
                          std::string const& /*problem*/) {
    if (mFormat != InfoFormat::None) {
        host::MutexLock const lock(mLock);
        infoLocked(mBegun).addConfiguration(config, status);
    }
}

void Report::onRequest(ISPRequest const& request, Status status, std::string const& problem) {
    setOutcome(request.requestNumber, status == Status::OK ? Outcome::Accepted : Outcome::Refused,
               status, problem);
    if (mFormat != InfoFormat::None) {
        host::MutexLock const lock(mLock);
        infoLocked(request.requestNumber).addRequest(request, status);
    }
}

void Report::onResult(ISPResult const& result, host::isp::IspReport const& report) {
    setOutcome(result.reqNumber, Outcome::Finished, result.status, report.problem);
    if (mFormat != InfoFormat::None) {
        host::MutexLock const lock(mLock);
        infoLocked(result.reqNumber).addResult(result, report);
    }
}

Report::Answer Report::answerOf(uint32_t number) const {
    host::MutexLock const lock(mLock);
    auto const found = mFrames.find(number);
    return found == mFrames.end() ? Answer() : found->second.answer;
}

/** What is told of a frame. */
FrameInfo& Report::infoLocked(uint32_t frame) {
    std::unique_ptr<FrameInfo>& info = mFrames[frame].info;
    if (!info) {
        info = mFormat == InfoFormat::Json ? makeJsonInfo() : makeTextInfo();
    }
    return *info;
}

void Report::setOutcome(uint32_t frame, Outcome outcome, Status status,
                        std::string const& problem) {
    host::MutexLock const lock(mLock);
    Answer& state = mFrames[frame].answer;
    // The result may arrive before the submission is reported.
    if (outcome == Outcome::Accepted && state.outcome == Outcome::Finished) {
        return;
    }
    state.outcome = outcome;
    state.status = status;
    state.problem = problem;
}

}  // namespace quen::reprocess
