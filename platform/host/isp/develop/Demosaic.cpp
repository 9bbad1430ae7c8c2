#include "host/isp/develop/Demosaic.h"

#include <algorithm>

#include "host/isp/develop/Vectorised.h"

namespace quen::host::isp {

namespace {

constexpr int kRed = 0;
constexpr int kGreen = 1;
constexpr int kBlue = 2;

/**
 * The neighbourhood of one half row. `own` has the columns of the half row, `across` the others: of
 * sample i, across[i] is the left neighbour and across[i + 1] the right one.
 */
struct Surroundings {
    int16_t const* own[5];
    int16_t const* across[5];
};

// All sums of samples up to kCodeWhite fit 16 bits; the casts let the compiler use 16-bit lanes.
inline int16_t narrow(int value) {
    return static_cast<int16_t>(value);
}

/** At red or blue samples: interpolates green, and blue or red. */
QUEN_VECTORISED
void interpolateAtColour(Surroundings const& at, int count, int16_t* __restrict green,
                         int16_t* __restrict other) {
    int16_t const* const centre = at.own[2];
    for (int i = 0; i < count; ++i) {
        int16_t const cross =
                narrow(at.own[1][i] + at.own[3][i] + at.across[2][i] + at.across[2][i + 1]);
        int16_t const corners = narrow(at.across[1][i] + at.across[1][i + 1] + at.across[3][i] +
                                       at.across[3][i + 1]);
        int16_t const curvature = narrow(
                4 * centre[i] - (at.own[0][i] + at.own[4][i] + centre[i - 1] + centre[i + 1]));
        green[i] = narrow(narrow(2 * cross + curvature + 4) >> 3);
        other[i] = narrow((narrow(corners + 2) >> 2) + (narrow(3 * curvature + 8) >> 4));
    }
}

/** At green samples: interpolates the colour beside them, and the one above and below. */
QUEN_VECTORISED
void interpolateAtGreen(Surroundings const& at, int count, int16_t* __restrict beside,
                        int16_t* __restrict above) {
    int16_t const* const centre = at.own[2];
    for (int i = 0; i < count; ++i) {
        int16_t const corners = narrow(at.across[1][i] + at.across[1][i + 1] + at.across[3][i] +
                                       at.across[3][i + 1]);
        int16_t const row = narrow(centre[i - 1] + centre[i + 1]);
        int16_t const column = narrow(at.own[0][i] + at.own[4][i]);
        // Summed in this order, no intermediate sum leaves 16 bits.
        int16_t const base = narrow(5 * centre[i] - corners);
        int16_t const besideCurvature = narrow(2 * narrow(base - row) + column + 8);
        int16_t const aboveCurvature = narrow(2 * narrow(base - column) + row + 8);
        beside[i] = narrow((narrow(at.across[2][i] + at.across[2][i + 1] + 1) >> 1) +
                           (besideCurvature >> 4));
        above[i] = narrow((narrow(at.own[1][i] + at.own[3][i] + 1) >> 1) + (aboveCurvature >> 4));
    }
}

}  // namespace

void demosaicRow(BayerRow const rows[5], bool hasRed, int first, int last, RgbHalfRows const& even,
                 RgbHalfRows const& odd) {
    Surroundings atEven;
    Surroundings atOdd;
    for (int i = 0; i < 5; ++i) {
        atEven.own[i] = rows[i].even + first;
        atEven.across[i] = rows[i].odd + first - 1;
        atOdd.own[i] = rows[i].odd + first;
        atOdd.across[i] = rows[i].even + first;
    }
    int const count = last - first;
    if (hasRed) {
        std::copy_n(atEven.own[2], count, even[kRed]);
        interpolateAtColour(atEven, count, even[kGreen], even[kBlue]);
        std::copy_n(atOdd.own[2], count, odd[kGreen]);
        interpolateAtGreen(atOdd, count, odd[kRed], odd[kBlue]);
    } else {
        std::copy_n(atEven.own[2], count, even[kGreen]);
        interpolateAtGreen(atEven, count, even[kBlue], even[kRed]);
        std::copy_n(atOdd.own[2], count, odd[kBlue]);
        interpolateAtColour(atOdd, count, odd[kGreen], odd[kRed]);
    }
}

}  // namespace quen::host::isp
