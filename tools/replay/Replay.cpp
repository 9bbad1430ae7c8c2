#include "Replay.h"

#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "Comparison.h"
#include "Fields.h"
#include "RecordedOrder.h"
#include "ReplayClient.h"
#include "ReplayIsp.h"
#include "ReplayThreeA.h"
#include "ThreadReplay.h"
#include "host/gralloc/GraphicsServices.h"

namespace quen::replay {
namespace {

/** The crossings of each thread, by their indices. */
std::map<uint32_t, std::vector<size_t>> byThread(Recording const& recording) {
    std::map<uint32_t, std::vector<size_t>> threads;
    for (size_t i = 0; i < recording.crossings.size(); ++i) {
        threads[recording.crossings[i].thread()].push_back(i);
    }
    return threads;
}

/** A recording with all that plays it; threads may be blocked in it when it has ended. */
class Stage {
  public:
    Stage(Recording const& recording, host::GraphicsServices const& graphics,
          std::map<uint32_t, std::vector<size_t>> const& threads)
        : mOrder(recording, threads.size()),
          mComparison(recording.holdsPictures),
          mClient(mIsp, graphics.allocator, *mThreeA) {
        host::setThreeAStore(mThreeA);
        mIsp.install();
        for (auto const& [number, crossings] : threads) {
            mThreads.emplace_back(
                    mOrder, mComparison, crossings,
                    [this](ThreadReplay& thread, size_t index) { perform(thread, index); });
        }
    }
    Stage(Stage const&) = delete;
    Stage& operator=(Stage const&) = delete;

    Outcome run(std::chrono::seconds patience) {
        std::vector<std::thread> running;
        for (ThreadReplay& thread : mThreads) {
            running.emplace_back([&thread] { thread.run(); });
        }
        RecordedOrder::End const end = mOrder.waitForEnd(patience);
        for (std::thread& thread : running) {
            end.isLeft ? thread.join() : thread.detach();
        }
        Outcome outcome;
        outcome.differences = mComparison.differences();
        outcome.endsProcess = !end.isWhole && end.reason.empty();
        outcome.isBlocked = !end.isLeft;
        if (!end.reason.empty()) {
            outcome.differences.push_back(end.reason);
        }
        return outcome;
    }

  private:
    /** Nothing may be thrown through the library, which may be what calls this. */
    void perform(ThreadReplay& thread, size_t index) {
        try {
            if (thread.at(index).has_client_call()) {
                mClient.perform(thread, index);
            } else {
                mIsp.perform(thread, index);
            }
        } catch (std::exception const& error) {
            mOrder.stop("no. " + std::to_string(index + 1) + ", " + titleOf(thread.at(index)) +
                        ": cannot go on: " + error.what());
        }
    }

    RecordedOrder mOrder;
    Comparison mComparison;
    ReplayIsp mIsp;
    std::shared_ptr<ReplayThreeA> const mThreeA = std::make_shared<ReplayThreeA>();
    ReplayClient mClient;
    std::deque<ThreadReplay> mThreads;
};

}  // namespace

Outcome replay(Recording const& recording, std::chrono::seconds patience) {
    auto stage = std::make_unique<Stage>(recording, host::registerGraphicsServices(),
                                         byThread(recording));
    Outcome outcome = stage->run(patience);
    if (outcome.isBlocked) {
        // Threads are blocked in it.
        static_cast<void>(stage.release());
    }
    return outcome;
}

}  // namespace quen::replay
