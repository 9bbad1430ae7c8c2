#include "Isp.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <hidl/Status.h>
#include <quenOfflineDevice/bridge/ClientCallback.h>

#include "Graphics.h"

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace quensoak {

namespace {

constexpr char kInstance[] = "internal/0";
constexpr uint32_t kFirstStrayNumber = 0xf0000000;
constexpr uint64_t kDeathCookie = 7;
constexpr auto kMeetingPatience = std::chrono::microseconds(50);
constexpr auto kIdle = std::chrono::microseconds(200);  // how long a thread sleeps when not woken
constexpr size_t kWorthWaking = 8;                      // jobs

// The header of an output tuning buffer.
constexpr size_t kTotalUsedBytesWord = 8;
constexpr int32_t kUsedTuningBytes = 512;

android::hardware::Status lost() {
    return android::hardware::Status::fromExceptionCode(
            android::hardware::Status::EX_TRANSACTION_FAILED, "the ISP is out of reach");
}

/** The trailer of a JPEG buffer: an id, and the JPEG's size. */
void fillTrailer(Plan const& plan, uint32_t (&trailer)[2]) {
    trailer[0] = plan.trailer == Trailer::WrongId ? 0xABCD : 0x00FF;
    trailer[1] = plan.trailer == Trailer::TooLarge   ? kBlobBytes + 1
                 : plan.trailer == Trailer::Negative ? 0x80000001u
                                                     : plan.jpegBytes;
}

}  // namespace

/** One opened device. Its calls come on the client's thread. */
class Isp::Device final : public isphal::IDevice {
  public:
    using StatusReturn = Return<isphal::Status>;

    explicit Device(Isp& isp) : mIsp(isp) {}

    StatusReturn configureISPDevice(isphal::ISPStreamConfiguration const& config,
                                    sp<isphal::ICallback> const& callback) override {
        if (config.inputStreams.size() != 1 || config.outputStreams.size() == 0 ||
            (callback == nullptr && !mIsp.hasDied())) {
            mIsp.mLedger.add(Count::IspSawWrong);
        }
        mCallback = callback;
        return isphal::Status::OK;
    }
    StatusReturn processISPRequest(hidl_vec<isphal::ISPRequest> const& requests) override {
        if (requests.size() != 1) {
            mIsp.mLedger.add(Count::IspSawWrong);
            return isphal::Status::ILLEGAL_ARGUMENT;
        }
        bool lostReply = false;
        isphal::Status const status = mIsp.answer(*this, requests[0], lostReply);
        if (lostReply) {
            return lost();
        }
        return status;
    }
    StatusReturn flush() override { return isphal::Status::OK; }
    StatusReturn closeISPDevice() override {
        mIsp.closed(*this);
        mCallback = nullptr;
        return isphal::Status::OK;
    }

    sp<isphal::ICallback> const& callback() const { return mCallback; }

  private:
    Isp& mIsp;
    sp<isphal::ICallback> mCallback;
};

class Isp::Module final : public isphal::IISPModule {
  public:
    explicit Module(Isp& isp) : mIsp(isp) {}

    Return<void> openISPDevice(openISPDevice_cb cb) override {
        {
            std::lock_guard<std::mutex> const guard(mIsp.mLock);
            mIsp.mDied = false;
        }
        cb(isphal::Status::OK, new Device(mIsp));
        return Void();
    }

  private:
    Isp& mIsp;
};

Isp::Isp(Ledger& ledger, Answers& answers, unsigned threads) : mLedger(ledger), mAnswers(answers) {
    sp<isphal::IISPModule> const module = new Module(*this);
    if (module->registerAsService(kInstance) != android::OK) {
        abort();
    }
    for (unsigned i = 0; i < threads; ++i) {
        mThreads.emplace_back([this, i] { loop(i); });
    }
}

Isp::~Isp() {
    {
        std::lock_guard<std::mutex> const guard(mLock);
        mEnded = true;
    }
    mWork.notify_all();
    for (std::thread& thread : mThreads) {
        thread.join();
    }
}

bool Isp::stopExpecting() {
    return std::exchange(mExpected, nullptr) == nullptr;
}

size_t Isp::releaseHeld() {
    size_t const count = mHeld.size();
    std::vector<Job> jobs;
    for (Job const& held : mHeld) {
        for (Job& job :
             jobsOf(*held.device, held.callback, held.account, held.account->plan.copies)) {
            jobs.push_back(std::move(job));
        }
    }
    mHeld.clear();
    mHeldAccounts.clear();
    enqueue(std::move(jobs));
    return count;
}

bool Isp::hasDied() {
    std::lock_guard<std::mutex> const guard(mLock);
    return mDied;
}

void Isp::waitForRoom(size_t limit) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mOutstanding < limit) {
        return;
    }
    mWork.notify_one();
    mAwaited = (limit + 1) / 2;  // not woken for every single answer
    mRoom.wait(lock, [this] { return mOutstanding < mAwaited; });
    mAwaited = 0;
}

/** Takes one request, as its plan says. */
isphal::Status Isp::answer(Device& device, isphal::ISPRequest const& request, bool& lostReply) {
    AccountRef const account = std::exchange(mExpected, nullptr);
    if (account == nullptr || account->number != request.requestNumber ||
        request.outputBuffers.size() != (account->plan.twoOutputs ? 2u : 1u)) {
        mLedger.add(Count::IspSawWrong);
        return isphal::Status::ILLEGAL_ARGUMENT;
    }
    if (hasDied()) {
        account->reachedDead = true;
        lostReply = true;
        return isphal::Status::OK;
    }
    Plan const& plan = account->plan;
    lostReply = plan.fate == Fate::NeverReached || plan.fate == Fate::ReplyLost;
    if (plan.moduleDies) {
        std::vector<Job> death(1);
        death[0] = {Job::Kind::Death, &device, device.callback(), account, nullptr};
        enqueue(std::move(death));
    }
    if (plan.fate == Fate::Refused) {
        return isphal::Status::RESOURCE_ERROR;
    }
    if (plan.fate == Fate::NeverReached || account->isSecond) {
        return isphal::Status::OK;
    }
    leavePictures(request, *account);
    if (plan.fate == Fate::Held) {
        mHeld.push_back({Job::Kind::Result, &device, device.callback(), account, nullptr});
        mHeldAccounts.push_back(account);
        return isphal::Status::OK;
    }
    if (plan.fate == Fate::Dropped) {
        return isphal::Status::OK;
    }
    int copies = plan.copies;
    if (plan.fate == Fate::AtOnce) {
        --copies;
        Job const first = {Job::Kind::Result, &device, device.callback(), account, nullptr};
        beginResult(first);
        deliver(first);
    }
    enqueue(jobsOf(device, device.callback(), account, copies));
    return isphal::Status::OK;
}

/** Writes what an ISP leaves in a request's output buffers. */
void Isp::leavePictures(isphal::ISPRequest const& request, Account const& account) const {
    isphal::ISPBuffer const& output = request.outputBuffers[request.outputBuffers.size() - 1];
    if (account.plan.configuration.stage == Stage::YuvToJpeg) {
        uint32_t trailer[2];
        fillTrailer(account.plan, trailer);
        Graphics::write(output.buffer, 0, &account.number, sizeof(account.number));
        Graphics::write(output.buffer, kBlobBytes - sizeof(trailer), trailer, sizeof(trailer));
        return;
    }
    int32_t header[kTotalUsedBytesWord + 1] = {static_cast<int32_t>(account.number)};
    header[kTotalUsedBytesWord] = kUsedTuningBytes;
    Graphics::write(output.tuningData, 0, header, sizeof(header));
}

/** Everything that a plan has the ISP's threads do about a request. */
std::vector<Isp::Job> Isp::jobsOf(Device const& device, sp<isphal::ICallback> const& callback,
                                  AccountRef const& account, int copies) const {
    Plan const& plan = account->plan;
    std::vector<Job> jobs;
    std::shared_ptr<std::atomic<int>> meeting;
    if (copies > 1 && plan.copiesTogether) {
        meeting = std::make_shared<std::atomic<int>>(copies);
    }
    if (plan.earlyResult) {
        jobs.push_back({Job::Kind::EarlyResult, &device, callback, account, nullptr});
    }
    for (int i = 0; i < copies; ++i) {
        jobs.push_back({Job::Kind::Result, &device, callback, account, meeting});
    }
    if (plan.strayResult) {
        jobs.push_back({Job::Kind::StrayResult, &device, callback, account, nullptr});
    }
    return jobs;
}

/**
 * Puts jobs into the queue. A thread is woken when somebody waits for one of them, or when several
 * have gathered: waking one for every request would be most of what the run does.
 */
void Isp::enqueue(std::vector<Job> jobs) {
    if (jobs.empty()) {
        return;
    }
    size_t const count = jobs.size();
    bool const isAwaited = jobs.front().account->plan.waits;
    size_t queued = 0;
    {
        std::lock_guard<std::mutex> const guard(mLock);
        std::move(jobs.begin(), jobs.end(), std::back_inserter(mQueue));
        mOutstanding += count;
        queued = mQueue.size();
    }
    if (isAwaited || queued >= kWorthWaking) {
        mWork.notify_one();
    }
}

/** Enters that a result is on its way. Nothing can take it back. */
void Isp::beginResult(Job const& job) {
    if (job.kind == Job::Kind::Result) {
        ++job.account->answers;
        job.account->answersInTime += job.account->givenUp ? 0 : 1;
    }
}

/** Calls the library. */
void Isp::deliver(Job const& job) {
    Account const& account = *job.account;
    if (job.kind == Job::Kind::Death) {
        {
            std::lock_guard<std::mutex> const guard(mLock);
            mDied = true;
        }
        static_cast<HalInterface::ClientCallback*>(job.callback.get())
                ->serviceDied(kDeathCookie, nullptr);
        mLedger.add(Count::Deaths);
        return;
    }
    if (account.plan.delayMicroseconds > 0) {
        usleep(account.plan.delayMicroseconds);
    }
    if (job.meeting != nullptr) {
        --*job.meeting;
        auto const deadline = std::chrono::steady_clock::now() + kMeetingPatience;
        while (*job.meeting > 0 && std::chrono::steady_clock::now() < deadline) {
        }
    }
    isphal::ISPResult result;
    result.reqNumber = account.number;
    result.status = account.plan.status;
    std::vector<uint8_t>& metadata = mAnswers[account.plan.metadata];
    if (job.kind == Job::Kind::StrayResult) {
        result.reqNumber = kFirstStrayNumber + account.number % 1000;
        mLedger.add(Count::Strays);
    } else {
        result.resultMetadata.setToExternal(metadata.data(), metadata.size());
    }
    if (job.kind == Job::Kind::EarlyResult) {
        mLedger.add(Count::EarlyResults);
        (void)job.callback->processEarlyResult(result).isOk();
        return;
    }
    if (account.plan.metadata >= mAnswers.sound()) {
        mLedger.add(Count::Malformed);
    }
    (void)job.callback->processResult(result).isOk();
}

void Isp::forgetHeld() {
    mHeld.clear();
    mHeldAccounts.clear();
}

/** Forgets what a closed device has not answered. What a thread is at goes on meanwhile. */
void Isp::closed(Device const& device) {
    std::vector<Job> forgotten;  // ends without the lock: it may hold the last of an account
    std::lock_guard<std::mutex> const guard(mLock);
    auto const kept = std::partition(mQueue.begin(), mQueue.end(), [&device](Job const& job) {
        return job.device != &device || job.kind == Job::Kind::Death;
    });
    std::move(kept, mQueue.end(), std::back_inserter(forgotten));
    mQueue.erase(kept, mQueue.end());
    mOutstanding -= forgotten.size();
    forgetHeld();
}

void Isp::loop(size_t thread) {
    std::minstd_rand random(static_cast<unsigned>(thread) + 1);
    std::unique_lock<std::mutex> lock(mLock);
    for (;;) {
        while (mQueue.empty()) {
            if (mEnded) {
                return;
            }
            mWork.wait_for(lock, kIdle);
        }
        if (mQueue.size() > 1) {
            mWork.notify_one();
        }
        std::swap(mQueue[random() % mQueue.size()], mQueue.back());
        Job job = std::move(mQueue.back());
        mQueue.pop_back();
        beginResult(job);
        lock.unlock();
        deliver(job);
        job = {};  // may close the account, or end the last of a session
        lock.lock();
        --mOutstanding;
        if (mAwaited > mOutstanding) {
            mRoom.notify_one();
        }
    }
}

}  // namespace quensoak
