#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/isp/buffers/Picture.h"
#include "host/isp/develop/Companding.h"
#include "host/isp/develop/Demosaic.h"
#include "host/isp/develop/RawUnpack.h"
#include "host/isp/develop/Refinement.h"
#include "host/isp/develop/Rendering.h"

namespace quen::host::isp {

/** The parameters that all bands of a development share. */
struct DevelopPlan {
    RawPicture source;
    PixelRect crop;
    int redColumn = 0;  ///< 0 or 1: column of the red sample in its cell; 0 for an RGB image
    int redRow = 0;     ///< the same of its row
    Companding companding;
    Rendering rendering;
    Refinement refinement;
    YuvPicture target;
};

/** Rows of the target that make a band; an even number. */
constexpr int kBandRows = 64;

/** Develops bands one after the other, in memory of its own. Not thread-safe. */
class BandDeveloper {
  public:
    /** @param plan must outlive this */
    explicit BandDeveloper(DevelopPlan const& plan);

    /** Develops those of rows [index * kBandRows, (index + 1) * kBandRows) that the target has. */
    void develop(int index);

  private:
    void unpackBayer(int firstRow, int lastRow);
    void fillRowEnds(int16_t* even, int16_t* odd) const;
    void renderBayer(int firstRow, int lastRow);
    void renderRgb(int firstRow, int lastRow);
    uint32_t* pixelRow(int bandRow);
    void convert(int rows);
    void store(int firstTargetRow, int lastTargetRow, int firstBandRow, int bandRows);
    void storePlane(std::vector<uint8_t> const& plane, int width, int row, int rows, int threshold,
                    int sharpening, uint8_t* target) const;

    DevelopPlan const& mPlan;
    int mCells;      ///< column pairs of the source
    int mFirstCell;  ///< cells that the crop covers, mLastCell excluded
    int mLastCell;
    size_t mHalfRowStride;  ///< samples from half row to half row
    size_t mPixelStride;

    std::vector<int16_t> mSamples;  ///< two half rows per raw row of the band
    std::vector<BayerRow> mRows;    ///< by raw row of the band
    std::vector<int16_t> mColours;  ///< six half rows: red, green, blue of even and odd columns
    RgbHalfRows mEven = {};
    RgbHalfRows mOdd = {};
    std::vector<uint32_t> mPixels;  ///< the band as RGB
    std::vector<uint8_t> mLuma;     ///< the band as 4:2:0, rows without padding
    std::vector<uint8_t> mCb;
    std::vector<uint8_t> mCr;
    std::vector<uint8_t> mChromaRows;  ///< a refined row of cb, and one of cr
};

}  // namespace quen::host::isp
