/**
 * The soak: a client and an ISP that break everything that can be broken, for as many requests as
 * wanted, and a ledger that says what must come of each. See scripts/soak.sh.
 */
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

#include <CLI/CLI.hpp>

#include "Answers.h"
#include "Build.h"
#include "Client.h"
#include "Faults.h"
#include "Graphics.h"
#include "Isp.h"
#include "Ledger.h"
#include "Leftovers.h"
#include "Session.h"
#include "ThreeAStore.h"
#include "host/base/Properties.h"
#include "host/log/LogControl.h"

namespace quensoak {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kProgressEvery = std::chrono::seconds(10);
constexpr uint64_t kWarmUp = 5000;  // requests, before anything is compared: half a short run
constexpr int64_t kMostBlocksOfARecord = 16;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/**
 * The handle of a 3A buffer has 0 in its descriptor slot, and copies of it duplicate that: standard
 * input has to be open, and nobody's file. An outstanding request holds several descriptors.
 */
void prepareDescriptors() {
    int const null = open("/dev/null", O_RDONLY);
    dup2(null, STDIN_FILENO);
    if (null > STDIN_FILENO) {
        close(null);
    }
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

/** Runs sessions until there were so many requests. */
void runUntil(Cast const& cast, uint64_t requests, Clock::time_point start) {
    static Clock::time_point latest = start;
    while (cast.ledger.count(Count::Requests) < requests) {
        Session(cast).run();
        if (Clock::now() - latest > kProgressEvery) {
            latest = Clock::now();
            fprintf(stderr, "soak: %llu requests, %.0f s\n",
                    static_cast<unsigned long long>(cast.ledger.count(Count::Requests)),
                    secondsSince(start));
        }
    }
}

/** Descriptors, mappings and heap that nothing explains. */
struct Leaks {
    int64_t descriptors;
    int64_t mappings;
    int64_t imports;
    int64_t blocks;

    bool none() const { return descriptors == 0 && mappings == 0 && imports == 0 && blocks == 0; }
};

/** What is left over, less what the default build's contract leaks. */
Leaks leaksOf(Holdings const& left, uint64_t records, uint64_t descriptors, uint64_t mappings) {
    Leaks leaks = {left.descriptors - static_cast<int64_t>(descriptors),
                   left.mappings - static_cast<int64_t>(mappings), left.imports, left.heapBlocks};
    // How many blocks a record has depends on its metadata.
    if (leaks.blocks > 0 && leaks.blocks <= static_cast<int64_t>(records) * kMostBlocksOfARecord) {
        leaks.blocks = 0;
    }
    return leaks;
}

unsigned long long told(Ledger const& ledger, Count what) {
    return static_cast<unsigned long long>(ledger.count(what));
}

void printResult(Ledger const& ledger, Leaks const& leaks, Holdings const& left, uint64_t seed,
                 double seconds) {
    printf("%llu requests (%s build), %llu told once, %llu waited for, %llu rightly never, "
           "%llu lost, %llu told twice, %llu uninvited, %llu wrong, %lld leaked "
           "(%llu requests, %lld descriptors, %lld mappings, %lld imports, %lld heap blocks), "
           "%llu unearned time-outs",
           told(ledger, Count::Requests), kHardened ? "hardened" : "default",
           told(ledger, Count::ToldOnce), told(ledger, Count::Returned),
           told(ledger, Count::RightlyNever), told(ledger, Count::Lost),
           told(ledger, Count::ToldTwice), told(ledger, Count::Uninvited),
           told(ledger, Count::WrongContent) + told(ledger, Count::WrongReturn) +
                   told(ledger, Count::IspSawWrong),
           static_cast<long long>(ledger.open() + (leaks.none() ? 0 : 1)),
           static_cast<unsigned long long>(ledger.open()),
           static_cast<long long>(leaks.descriptors), static_cast<long long>(leaks.mappings),
           static_cast<long long>(leaks.imports), static_cast<long long>(leaks.blocks),
           told(ledger, Count::UnearnedTimeout) + told(ledger, Count::UnearnedDrain));
    if (!kHardened) {
        printf(", lost signals %llu (answer before the wait: contract), %llu records abandoned "
               "(contract: %lld descriptors, %lld mappings, %lld heap blocks)",
               told(ledger, Count::LostSignals), told(ledger, Count::Abandoned),
               static_cast<long long>(left.descriptors), static_cast<long long>(left.mappings),
               static_cast<long long>(left.heapBlocks));
    }
    printf(", %.0f s, seed %llu\n", seconds, static_cast<unsigned long long>(seed));
}

int run(uint64_t requests, uint64_t seed, unsigned threads) {
    Clock::time_point const start = Clock::now();
    prepareDescriptors();
    quen::host::setLogLevel(quen::host::LogLevel::Silent);
    quen::host::setProperty("vendor.debug.camera.jpeg.timeout", "1");

    android::sp<Graphics> const graphics = new Graphics;
    graphics->install();
    auto const threeA = std::make_shared<PlannedThreeAStore>();
    quen::host::setThreeAStore(threeA);

    Ledger ledger;
    Answers answers;
    Isp isp(ledger, answers, threads);
    Client client(ledger, isp, *graphics, *threeA);
    Faults faults(seed, requests, answers.sound(), answers.all());
    Cast const cast = {ledger, isp, client, faults, requests};

    runUntil(cast, std::min(kWarmUp, requests / 2), start);
    Holdings const before = Holdings::now(*graphics);
    uint64_t const records = ledger.count(Count::Abandoned);
    uint64_t const descriptors = ledger.count(Count::AbandonedDescriptors);
    uint64_t const mappings = ledger.count(Count::AbandonedMappings);
    runUntil(cast, requests, start);
    Holdings const left = Holdings::now(*graphics) - before;

    Leaks const leaks = leaksOf(left, ledger.count(Count::Abandoned) - records,
                                ledger.count(Count::AbandonedDescriptors) - descriptors,
                                ledger.count(Count::AbandonedMappings) - mappings);
    fprintf(stderr, "soak: %s\n", ledger.faultsText().c_str());
    printResult(ledger, leaks, left, seed, secondsSince(start));
    return ledger.isClean() && leaks.none() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

}  // namespace quensoak

int main(int argc, char** argv) {
    CLI::App app("Requests under load and faults, each one accounted for");
    uint64_t requests = 1000000;
    uint64_t seed = std::random_device()();
    unsigned threads = 3;
    app.add_option("requests", requests, "how many")->capture_default_str();
    app.add_option("--seed", seed, "of everything that goes wrong; chosen unless given");
    app.add_option("--threads", threads, "of the ISP")
            ->capture_default_str()
            ->check(CLI::Range(1, 64));
    CLI11_PARSE(app, argc, argv);
    fprintf(stderr, "soak: seed %llu\n", static_cast<unsigned long long>(seed));
    return quensoak::run(requests, seed, threads);
}
