#include <array>
#include <atomic>
#include <stdexcept>

#include <gtest/gtest.h>

#include "host/base/Parallel.h"

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
}
