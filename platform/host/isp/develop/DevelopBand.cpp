#include "host/isp/develop/DevelopBand.h"

#include <algorithm>
#include <cstring>

#include <libyuv.h>

namespace quen::host::isp {

namespace {

constexpr int kDemosaicMargin = 2;    // raw rows read beyond a row, on either side
constexpr int kRefinementMargin = 2;  // picture rows: one of chroma
constexpr int kCellMargin = 2;        // cells beyond either end of a half row

constexpr int kMaxBandRows = kBandRows + 2 * kRefinementMargin;
constexpr int kMaxRawRows = kMaxBandRows + 2 * kDemosaicMargin;

/** Mirrors a position at the border; mirroring keeps the Bayer colour. */
int mirrored(int position, int size) {
    if (position < 0) {
        return -position;
    }
    return position < size ? position : 2 * size - 2 - position;
}

}  // namespace

BandDeveloper::BandDeveloper(DevelopPlan const& plan)
    : mPlan(plan),
      mCells((plan.source.width + plan.redColumn + 1) / 2),
      mFirstCell((plan.crop.x + plan.redColumn) / 2),
      mLastCell((plan.crop.x + plan.crop.width - 1 + plan.redColumn) / 2 + 1),
      mHalfRowStride(static_cast<size_t>(mCells + 2 * kCellMargin)),
      mPixelStride(static_cast<size_t>(mLastCell - mFirstCell) * 2) {
    if (plan.source.isBayer()) {
        mSamples.resize(2 * mHalfRowStride * kMaxRawRows);
        mRows.resize(kMaxRawRows);
    }
    mColours.resize(6 * mHalfRowStride);
    for (size_t channel = 0; channel < 3; ++channel) {
        mEven[channel] = mColours.data() + channel * mHalfRowStride;
        mOdd[channel] = mColours.data() + (3 + channel) * mHalfRowStride;
    }
    size_t const width = static_cast<size_t>(plan.crop.width);
    size_t const chromaWidth = static_cast<size_t>(chromaSize(plan.crop.width));
    mPixels.resize(kMaxBandRows * mPixelStride);
    mLuma.resize(kMaxBandRows * width);
    mCb.resize(kMaxBandRows / 2 * chromaWidth);
    mCr.resize(kMaxBandRows / 2 * chromaWidth);
    mChromaRows.resize(2 * chromaWidth);
}

void BandDeveloper::develop(int index) {
    int const height = mPlan.crop.height;
    int const first = index * kBandRows;
    int const last = std::min(first + kBandRows, height);
    int const margin = mPlan.refinement.isOff() ? 0 : kRefinementMargin;
    int const firstRow = std::max(first - margin, 0);
    int const lastRow = std::min(last + margin, height);
    if (mPlan.source.isBayer()) {
        unpackBayer(mPlan.crop.y + firstRow, mPlan.crop.y + lastRow);
        renderBayer(mPlan.crop.y + firstRow, mPlan.crop.y + lastRow);
    } else {
        renderRgb(mPlan.crop.y + firstRow, mPlan.crop.y + lastRow);
    }
    convert(lastRow - firstRow);
    store(first, last, firstRow, lastRow - firstRow);
}

/** Unpacks the source's rows [firstRow, lastRow) and the demosaic's margins around them. */
void BandDeveloper::unpackBayer(int firstRow, int lastRow) {
    bool const shifted = mPlan.redColumn == 1;
    for (int row = firstRow - kDemosaicMargin; row < lastRow + kDemosaicMargin; ++row) {
        size_t const slot = static_cast<size_t>(row - firstRow + kDemosaicMargin);
        int16_t* const even = mSamples.data() + 2 * slot * mHalfRowStride + kCellMargin;
        int16_t* const odd = even + mHalfRowStride;
        int const sourceRow = mirrored(row, mPlan.source.height);
        bool const hasRed = sourceRow % 2 == mPlan.redRow;
        int16_t const* const evenTable = mPlan.companding.table(hasRed ? 0 : 2);
        int16_t const* const oddTable = mPlan.companding.table(hasRed ? 1 : 3);
        if (shifted) {
            unpackBayerRow(mPlan.source, sourceRow, oddTable, evenTable, odd, even + 1);
        } else {
            unpackBayerRow(mPlan.source, sourceRow, evenTable, oddTable, even, odd);
        }
        fillRowEnds(even, odd);
        mRows[slot] = {even, odd};
    }
}

/** Mirrors the row into the margins that the demosaic reads. */
void BandDeveloper::fillRowEnds(int16_t* even, int16_t* odd) const {
    int const width = mPlan.source.width;
    int const shift = mPlan.redColumn;
    auto const fill = [&](int column) {
        int16_t* const half = (column + shift) % 2 == 0 ? even : odd;
        // A right shift rounds down for negative columns as well.
        half[(column + shift) >> 1] = half[(mirrored(column, width) + shift) >> 1];
    };
    for (int column = -2 - shift; column < 0; ++column) {
        fill(column);
    }
    for (int column = width; column < 2 * (mCells + 1) - shift; ++column) {
        fill(column);
    }
}

/** Demosaics and renders the rows [firstRow, lastRow) that were unpacked. */
void BandDeveloper::renderBayer(int firstRow, int lastRow) {
    for (int row = firstRow; row < lastRow; ++row) {
        BayerRow const* const rows = mRows.data() + (row - firstRow);
        demosaicRow(rows, row % 2 == mPlan.redRow, mFirstCell, mLastCell, mEven, mOdd);
        mPlan.rendering.renderRow(mEven, mOdd, mLastCell - mFirstCell, pixelRow(row - firstRow));
    }
}

/** Unpacks and renders the rows [firstRow, lastRow) of an RGB image. */
void BandDeveloper::renderRgb(int firstRow, int lastRow) {
    // Red, green and blue; an RGB image uses the levels of the first of the two greens.
    int16_t const* const tables[] = {mPlan.companding.table(0), mPlan.companding.table(1),
                                     mPlan.companding.table(3)};
    RgbHalfRows even = mEven;
    RgbHalfRows odd = mOdd;
    for (size_t channel = 0; channel < even.size(); ++channel) {
        even[channel] += mFirstCell;
        odd[channel] += mFirstCell;
    }
    for (int row = firstRow; row < lastRow; ++row) {
        unpackRgbRow(mPlan.source, row, tables, mEven, mOdd);
        mPlan.rendering.renderRow(even, odd, mLastCell - mFirstCell, pixelRow(row - firstRow));
    }
}

uint32_t* BandDeveloper::pixelRow(int bandRow) {
    return mPixels.data() + static_cast<size_t>(bandRow) * mPixelStride;
}

/** Converts the band's pixels, from the crop's first column on. */
void BandDeveloper::convert(int rows) {
    int const width = mPlan.crop.width;
    int const skipped = mPlan.crop.x + mPlan.redColumn - 2 * mFirstCell;
    libyuv::ARGBToJ420(reinterpret_cast<uint8_t const*>(mPixels.data() + skipped),
                       static_cast<int>(mPixelStride * sizeof(uint32_t)), mLuma.data(), width,
                       mCb.data(), chromaSize(width), mCr.data(), chromaSize(width), width, rows);
}

/** Refines the band's target rows and writes them; the rows around them are only read. */
void BandDeveloper::store(int firstTargetRow, int lastTargetRow, int firstBandRow, int bandRows) {
    YuvPicture const& target = mPlan.target;
    Refinement const& refinement = mPlan.refinement;
    for (int row = firstTargetRow; row < lastTargetRow; ++row) {
        storePlane(mLuma, target.width, row - firstBandRow, bandRows, refinement.lumaThreshold,
                   refinement.sharpening, target.y + static_cast<size_t>(row) * target.lumaStride);
    }
    int const chromaWidth = chromaSize(target.width);
    uint8_t* const cbRow = mChromaRows.data();
    uint8_t* const crRow = cbRow + chromaWidth;
    for (int row = firstTargetRow / 2; row < chromaSize(lastTargetRow); ++row) {
        size_t const offset = static_cast<size_t>(row) * target.chromaStride;
        bool const planar = target.isPlanar();
        uint8_t* const cb = planar ? target.cb + offset : cbRow;
        uint8_t* const cr = planar ? target.cr + offset : crRow;
        int const bandRow = row - firstBandRow / 2;
        storePlane(mCb, chromaWidth, bandRow, chromaSize(bandRows), refinement.chromaThreshold, 0,
                   cb);
        storePlane(mCr, chromaWidth, bandRow, chromaSize(bandRows), refinement.chromaThreshold, 0,
                   cr);
        if (!planar) {
            bool const cbFirst = target.isNv12();
            libyuv::MergeUVPlane(cbFirst ? cb : cr, 0, cbFirst ? cr : cb, 0,
                                 (cbFirst ? target.cb : target.cr) + offset, 0, chromaWidth, 1);
        }
    }
}

/** Writes one refined row of a plane of the band. */
void BandDeveloper::storePlane(std::vector<uint8_t> const& plane, int width, int row, int rows,
                               int threshold, int sharpening, uint8_t* target) const {
    auto const rowAt = [&](int index) {
        return plane.data() + static_cast<size_t>(index) * static_cast<size_t>(width);
    };
    if (threshold == 0 && sharpening == 0) {
        memcpy(target, rowAt(row), static_cast<size_t>(width));
        return;
    }
    refineRow(rowAt(std::max(row - 1, 0)), rowAt(row), rowAt(std::min(row + 1, rows - 1)), width,
              threshold, sharpening, target);
}

}  // namespace quen::host::isp
