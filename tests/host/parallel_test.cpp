#include <array>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "host/base/Parallel.h"

// Stands before the system's: helpers to spare on every machine.
unsigned std::thread::hardware_concurrency() noexcept {
    return 8;
}

TEST(Parallel, RunsEachPieceOnceAndRethrowsWhatAPieceThrows) {
    std::array<std::atomic<int>, 100> runs{};
    quen::host::inParallel(100, [&] { return [&](int piece) { ++runs[piece]; }; });
    for (std::atomic<int> const& count : runs) {
        EXPECT_EQ(count, 1);
    }
    auto const makeFailing = [] {
        return [](int piece) {
            if (piece == 7) {
                throw std::runtime_error("seven");
            }
        };
    };
    EXPECT_THROW(quen::host::inParallel(100, makeFailing), std::runtime_error);
    EXPECT_THROW(quen::host::inParallel(8, makeFailing), std::runtime_error);
    quen::host::inParallel(0, makeFailing);

    // The first piece fails once another has begun; those that have not are left out.
    std::atomic<int> begun{0};
    auto const makeFailingSlowly = [&] {
        return [&](int piece) {
            for (++begun; begun < 2;) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            makeFailing()(piece == 0 ? 7 : 0);
        };
    };
    EXPECT_THROW(quen::host::inParallel(2000, makeFailingSlowly), std::runtime_error);
    EXPECT_LT(begun, 2000);
}
