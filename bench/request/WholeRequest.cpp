#include "request/WholeRequest.h"

#include <memory>
#include <string>
#include <utility>

#include <quenCommon/Mutex.h>

#include "host/log/LogControl.h"
#include "request/BenchSession.h"
#include "support/Table.h"

namespace quenbench {

namespace {

constexpr size_t kEntries = 60;
constexpr size_t kRequests = 16;  // per run

// What the request table's lock costs: a request takes it for the insertion, the claim, the erasure
// and the test for an empty table, and the bridge's for its callback object.
constexpr char kRaw[] = "request/raw";
constexpr char kLocks[] = "request/locks";
constexpr size_t kLocksOfARequest = 5;
constexpr double kLocksShare = 0.01;  // of a request, at most

constexpr char kWakeUp[] = "request/wake-up";
constexpr char kWaits[] = "request/waits";  // the group of both cases

struct Flow {
    char const* name;
    char const* what;
    RequestKind kind;
    bool logs;
    bool waits;  ///< no callback: `process` waits for the answer
};

constexpr Flow kFlows[] = {
        {"raw", "RAW2YUV, callback, log off", RequestKind::RawToYuv, false, false},
        {"raw-log", "RAW2YUV, callback, log dropped", RequestKind::RawToYuv, true, false},
        {"raw-tuning", "RAW2YUV, own tuning buffer, log off", RequestKind::RawToYuvTuning, false,
         false},
        {"jpeg", "YUV2JPEG, callback, log off", RequestKind::YuvToJpeg, false, false},
        {"jpeg-log", "YUV2JPEG, callback, log dropped", RequestKind::YuvToJpeg, true, false},
        {"jpeg-waits", "YUV2JPEG, waits, log off", RequestKind::YuvToJpeg, false, true},
};

/** A sink that discards the text. */
class Drop final : public quen::host::LogSink {
  public:
    Drop() : mBefore(quen::host::setLogSink(this)) {
        quen::host::setLogLevel(quen::host::LogLevel::Debug);
    }
    ~Drop() override {
        quen::host::setLogSink(mBefore);
        quen::host::setLogLevel(quen::host::LogLevel::Silent);
    }
    void write(char const*, int, char const*) override {}

  private:
    quen::host::LogSink* const mBefore;
};

std::string caseName(Flow const& flow) {
    return std::string("request/") + flow.name;
}

double submitAll(BenchSession& session, Client const& client) {
    return measured([&] {
        for (size_t i = 0; i < kRequests; ++i) {
            session.submit(client);
        }
    });
}

/** Seconds from the ISP's answer to the return of the call. */
double submitAndWait(BenchSession& session) {
    Section section;
    session.submit(nullptr);
    section.stop();
    return secondsBetween(session.isp().answeredAt(), Clock::now());
}

Run prepareFlow(Flow const& flow) {
    Answering const answering = flow.waits ? Answering::FromThread : Answering::AtOnce;
    auto const session =
            std::make_shared<BenchSession>(flow.kind, answering, RequestShape{kEntries});
    if (flow.waits) {
        return [session] { return submitAndWait(*session); };
    }
    Client const client = makeClient();
    bool const logs = flow.logs;
    return [=] {
        std::unique_ptr<Drop> const drop = logs ? std::make_unique<Drop>() : nullptr;
        return submitAll(*session, client);
    };
}

/** The locks that a request takes, uncontended. */
Run prepareLocks() {
    struct Held {
        quen::Mutex mutex;
        Responder idle{[] {}, [] {}};  // a process of one thread would lock without atomics
    };
    auto const held = std::make_shared<Held>();
    return [held] {
        return measured([&] {
            for (size_t i = 0; i < kRequests * kLocksOfARequest; ++i) {
                quen::MutexLock const lock(held->mutex);
            }
        });
    };
}

/** The least a wait can take: one thread waits, another wakes it. */
Run prepareWakeUp() {
    struct Pair {
        pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
        pthread_cond_t answered = PTHREAD_COND_INITIALIZER;
        Responder responder{[] {},
                            [this] {
                                pthread_mutex_lock(&lock);
                                pthread_cond_signal(&answered);
                                pthread_mutex_unlock(&lock);
                            }};
    };
    auto const pair = std::make_shared<Pair>();
    return [pair] {
        timespec deadline;
        clock_gettime(CLOCK_REALTIME, &deadline);
        ++deadline.tv_sec;
        pthread_mutex_lock(&pair->lock);
        pair->responder.ask();
        pthread_cond_timedwait(&pair->answered, &pair->lock, &deadline);
        pthread_mutex_unlock(&pair->lock);
        return secondsBetween(pair->responder.answeredAt(), Clock::now());
    };
}

void printLocks(std::ostream& out, Figures const& figures) {
    double const locks = figures.seconds(kLocks);
    double const share = kLocksShare * figures.seconds(kRaw);
    if (locks >= 0 && share >= 0) {
        printRow(out,
                 {"  the request table's lock", "as often as a request takes it", timeText(locks),
                  "1 % of RAW2YUV " + timeText(share), locks / share, Goal::atMost(1)});
    }
}

void printTime(std::ostream& out, Figures const& figures, Flow const& flow) {
    double const ours = figures.seconds(caseName(flow));
    if (ours < 0) {
        return;
    }
    if (flow.waits) {
        double const wakeUp = figures.seconds(kWakeUp);
        printRow(out, {flow.what, "from the ISP's answer to the return", timeText(ours),
                       "bare wake-up " + timeText(wakeUp), ours / wakeUp, Goal::none()});
    } else {
        printRow(out, {flow.what, std::to_string(kEntries) + " entries", timeText(ours), "", -1,
                       Goal::none()});
    }
}

}  // namespace

void addWholeRequestCases(Cases& cases) {
    for (Flow const& flow : kFlows) {
        cases.push_back({caseName(flow), flow.waits ? 1 : kRequests, true,
                         flow.waits ? kWaits : caseName(flow),
                         [&flow] { return prepareFlow(flow); }});
    }
    cases.push_back({kWakeUp, 1, false, kWaits, prepareWakeUp});
    cases.push_back({kLocks, kRequests, false, kRaw, prepareLocks});
}

void printWholeRequestRows(std::ostream& out, Figures const& figures) {
    constexpr std::pair<char const*, char const*> kCounts[] = {
            {"instructions", "  instructions a request"},
            {"allocations", "  heap allocations a request"},
            {"syscalls", "  system calls a request"},
            {"formats", "  texts formatted a request"},
    };
    for (Flow const& flow : kFlows) {
        printTime(out, figures, flow);
        for (auto const& [kind, what] : kCounts) {
            double const count = figures.count(kind, caseName(flow));
            bool const mustBeNone = kind == std::string("formats") && !flow.logs;
            if (count >= 0) {
                printRow(out,
                         {what, flow.what, countText(count), mustBeNone ? "none" : "",
                          mustBeNone ? count : -1, mustBeNone ? Goal::atMost(0) : Goal::none()});
            }
        }
    }
    printLocks(out, figures);
    double const copies = figures.count("largeCopies", "request/raw-tuning");
    if (copies >= 0) {
        printRow(out, {"2 MB tuning bytes: copies", "ISP's buffer to entry to client's metadata",
                       countText(copies), "asked for: 2", copies / 2, Goal::atMost(1)});
    }
}

}  // namespace quenbench
