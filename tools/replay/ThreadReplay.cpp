#include "ThreadReplay.h"

#include <string>
#include <utility>

#include "Fields.h"
#include "Lookahead.h"

namespace quen::replay {
namespace {

using recording::Crossing;

thread_local ThreadReplay* tCurrent = nullptr;

/** Whether two crossings are of the same operation. */
bool isSameOperation(Crossing const& recorded, Crossing const& actual) {
    return recorded.what_case() == actual.what_case() && titleOf(recorded) == titleOf(actual);
}

/** Whether the client or the ISP makes this crossing, as a call. */
bool isMade(Crossing const& crossing) {
    return crossing.has_client_call() || crossing.has_result_call();
}

/** Whether the library ends the process over an answer of the ISP. */
bool isFatal(Crossing const& call, Crossing const& answer) {
    recording::IspReturn const& returned = answer.isp_return();
    if (call.isp_call().operation() == recording::IspCall::OPEN && call.has_isp_call() &&
        !(returned.has_answer() && returned.has_device())) {
        return true;
    }
    return call.has_isp_call() && call.isp_call().operation() != recording::IspCall::REQUEST &&
           call.isp_call().operation() != recording::IspCall::FLUSH &&
           (returned.has_transport_error() || returned.status() != 0);
}

}  // namespace

ThreadReplay::ThreadReplay(RecordedOrder& order, Comparison& comparison,
                           std::vector<size_t> crossings, Perform perform)
    : mOrder(order),
      mComparison(comparison),
      mCrossings(std::move(crossings)),
      mPerform(std::move(perform)) {}

ThreadReplay& ThreadReplay::current() {
    return *tCurrent;
}

void ThreadReplay::run() {
    tCurrent = this;
    while (mPlace < mCrossings.size()) {
        size_t const index = mCrossings[mPlace];
        if (!isMade(at(index))) {
            mOrder.stop("no. " + std::to_string(index + 1) + ", " + titleOf(at(index)) +
                        ", has no call before it: the recording is not whole");
        }
        mPerform(*this, index);
    }
    tCurrent = nullptr;
    mOrder.leave();
}

void ThreadReplay::begin(size_t index) {
    mOrder.awaitTurn(index);
    ++mPlace;
    mOrder.pass(index);
}

/** The thread's next crossing. Where there is none, the recording ends inside a call. */
size_t ThreadReplay::next() {
    if (mPlace == mCrossings.size()) {
        if (mOrder.isCut()) {
            mOrder.park();
        }
        mOrder.stop("the library goes on where the recording has ended");
    }
    return mCrossings[mPlace];
}

size_t ThreadReplay::meet(Crossing const& actual, uint64_t call) {
    size_t const index = next();
    Crossing const& recorded = at(index);
    if (!isSameOperation(recorded, actual) || (call != 0 && recorded.call() != call)) {
        mOrder.stop("no. " + std::to_string(index + 1) + ", session " +
                    std::to_string(recorded.session()) + ": recorded \"" + titleOf(recorded) +
                    "\", now \"" + titleOf(actual) + "\"");
    }
    if (recorded.isp_call().operation() == recording::IspCall::CONFIGURE) {
        if (auto const number = findOutstanding(mOrder, mOrder.next(), index)) {
            mComparison.add(index, recorded,
                            "recorded after the result of request " + std::to_string(*number) +
                                    ", now before it");
        }
    }
    mOrder.awaitTurn(index);
    mComparison.compare(index, recorded, actual);
    ++mPlace;
    mOrder.pass(index);
    return index;
}

Crossing const& ThreadReplay::answerOf(size_t call) {
    for (;;) {
        size_t const index = next();
        Crossing const& crossing = at(index);
        if (isMade(crossing)) {
            mPerform(*this, index);
            continue;
        }
        if (crossing.call() != at(call).call()) {
            mOrder.stop("no. " + std::to_string(index + 1) + ", " + titleOf(crossing) +
                        ", answers another call: the recording is not whole");
        }
        if (isFatal(at(call), crossing)) {
            mOrder.awaitTurn(index);
            bool const isLast = mPlace + 1 == mCrossings.size();
            mOrder.stop(isLast ? ""
                               : "no. " + std::to_string(index + 1) + ", " + titleOf(crossing) +
                                         ": the library ends the process here, which went on when "
                                         "it was recorded");
        }
        begin(index);
        return crossing;
    }
}

}  // namespace quen::replay
