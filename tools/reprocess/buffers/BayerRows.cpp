#include "buffers/BayerRows.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "host/base/Parallel.h"

namespace quen::reprocess {
namespace {

/** Four samples are five bytes: the upper eight bits of each, then the lower two of all. */
void packRow(uint16_t const* in, uint32_t width, uint8_t* out) {
    for (uint32_t x = 0; x < width; x += 4, in += 4, out += 5) {
        out[0] = static_cast<uint8_t>(in[0] >> 2);
        out[1] = static_cast<uint8_t>(in[1] >> 2);
        out[2] = static_cast<uint8_t>(in[2] >> 2);
        out[3] = static_cast<uint8_t>(in[3] >> 2);
        out[4] = static_cast<uint8_t>((in[0] & 3) | (in[1] & 3) << 2 | (in[2] & 3) << 4 |
                                      (in[3] & 3) << 6);
    }
}

/** Unpacks a row of RAW10 to words. */
void unpackRow(uint8_t const* in, uint32_t width, uint16_t* out) {
    for (uint32_t x = 0; x < width; ++x) {
        uint8_t const* const group = in + size_t{x} / 4 * 5;
        unsigned const low = (group[4] >> (x % 4 * 2)) & 3u;
        out[x] = static_cast<uint16_t>(group[x % 4] << 2 | low);
    }
}

/** Scales samples to another depth: shifts up, or rounds down. */
void scaleRow(uint16_t const* in, uint32_t width, int fromBits, int toBits, uint16_t* out) {
    if (fromBits <= toBits) {
        int const up = toBits - fromBits;
        for (uint32_t x = 0; x < width; ++x) {
            out[x] = static_cast<uint16_t>(in[x] << up);
        }
        return;
    }
    int const down = fromBits - toBits;
    unsigned const half = 1u << (down - 1);
    unsigned const largest = (1u << toBits) - 1;
    for (uint32_t x = 0; x < width; ++x) {
        out[x] = static_cast<uint16_t>(std::min((in[x] + half) >> down, largest));
    }
}

/** Writes rows of one image. Not thread-safe. */
class RowWriter {
  public:
    RowWriter(BayerImage const& image, int bits, uint32_t width, RawTarget target)
        : mImage(image),
          mBits(bits),
          mWidth(width),
          mTarget(target),
          mUnpacked(image.packed10 && target.raw16 ? width : 0),
          mScaled(bits != target.bits && !target.raw16 ? width : 0) {}

    void write(uint32_t y, uint8_t* out) {
        if (mImage.packed10 && !mTarget.raw16) {
            std::memcpy(out, mImage.packed10 + y * mImage.stride, size_t{mWidth} / 4 * 5);
            return;
        }
        uint16_t const* row = samplesOf(y);
        if (mTarget.raw16) {
            scaleRow(row, mWidth, mBits, mTarget.bits, reinterpret_cast<uint16_t*>(out));
            return;
        }
        if (mBits != mTarget.bits) {
            scaleRow(row, mWidth, mBits, mTarget.bits, mScaled.data());
            row = mScaled.data();
        }
        packRow(row, mWidth, out);
    }

  private:
    // The samples of a row as words; unpacked, they are good until the next row's.
    uint16_t const* samplesOf(uint32_t y) {
        if (!mImage.packed10) {
            return mImage.samples + y * mImage.stride;
        }
        unpackRow(mImage.packed10 + y * mImage.stride, mWidth, mUnpacked.data());
        return mUnpacked.data();
    }

    BayerImage const& mImage;
    int const mBits;
    uint32_t const mWidth;
    RawTarget const mTarget;
    std::vector<uint16_t> mUnpacked;
    std::vector<uint16_t> mScaled;
};

}  // namespace

void writeBayerRows(BayerImage const& image, int bits, uint32_t width, uint32_t height,
                    RawTarget target, uint8_t* out, size_t outStride) {
    constexpr uint32_t kRowsPerPiece = 64;
    uint32_t const pieces = (height + kRowsPerPiece - 1) / kRowsPerPiece;
    host::inParallel(static_cast<int>(pieces), [&] {
        auto const writer = std::make_shared<RowWriter>(image, bits, width, target);
        return [&, writer](int piece) {
            uint32_t const first = static_cast<uint32_t>(piece) * kRowsPerPiece;
            for (uint32_t y = first; y < std::min(first + kRowsPerPiece, height); ++y) {
                writer->write(y, out + y * outStride);
            }
        };
    });
}

}  // namespace quen::reprocess
