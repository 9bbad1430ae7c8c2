#include "host/isp/jpeg/JpegEncode.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <thread>

#include "host/base/Parallel.h"
#include "host/isp/jpeg/JpegSlice.h"

namespace quen::host::isp {

namespace {

// Restart markers count from 0 to 7: slices of a multiple of eight can be joined unchanged.
constexpr int kSliceStep = 8 * kMcuSide;

// Several per processor: parts of a picture may differ much in cost.
constexpr int kSlicesPerProcessor = 4;

constexpr uint8_t kMarker = 0xff;
constexpr uint8_t kFrameHeader = 0xc0;
constexpr uint8_t kScanHeader = 0xda;
constexpr uint8_t kLastRestart = 0xd7;
constexpr size_t kMarkerBytes = 2;
constexpr size_t kHeightInFrameHeader = 5;

/** One slice: the picture's rows from `firstRow` on, and its file. */
struct Slice {
    int firstRow = 0;
    int rows = 0;
    std::unique_ptr<uint8_t[]> bytes;  ///< null for the first slice, which is encoded in place
    uint8_t* file = nullptr;
    size_t size = 0;
};

/** Splits a picture into slices at restart intervals. */
std::vector<Slice> cut(int height) {
    int const processors = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    int const steps = (height + kSliceStep - 1) / kSliceStep;
    int const most = kSlicesPerProcessor * processors;
    int const stepsPerSlice = (steps + most - 1) / most;
    std::vector<Slice> slices;
    for (int row = 0; row < height; row += stepsPerSlice * kSliceStep) {
        Slice slice;
        slice.firstRow = row;
        slice.rows = std::min(stepsPerSlice * kSliceStep, height - row);
        slices.push_back(std::move(slice));
    }
    return slices;
}

/** Offset of the first segment with that marker in the headers of a file. */
size_t findSegment(uint8_t const* file, uint8_t marker) {
    size_t offset = kMarkerBytes;
    while (file[offset + 1] != marker) {
        offset += kMarkerBytes + static_cast<size_t>(file[offset + 2] << 8 | file[offset + 3]);
    }
    return offset;
}

/** Offset of the entropy-coded data, which follows the scan header. */
size_t scanOffset(uint8_t const* file) {
    size_t const header = findSegment(file, kScanHeader);
    return header + kMarkerBytes + static_cast<size_t>(file[header + 2] << 8 | file[header + 3]);
}

/**
 * Appends the other slices to the first: a restart marker replaces the end marker of each file, and
 * the frame header of the first gets the height of the whole picture.
 *
 * @return size of the whole file; 0 when it does not fit into `capacity`
 */
size_t join(std::vector<Slice> const& slices, int height, size_t capacity) {
    uint8_t* const target = slices.front().file;
    size_t size = slices.front().size;
    size_t const frame = findSegment(target, kFrameHeader);
    target[frame + kHeightInFrameHeader] = static_cast<uint8_t>(height >> 8);
    target[frame + kHeightInFrameHeader + 1] = static_cast<uint8_t>(height);
    for (size_t i = 1; i < slices.size(); ++i) {
        size_t const offset = scanOffset(slices[i].file);
        size_t const added = slices[i].size - offset;
        if (added > capacity - size) {
            return 0;
        }
        target[size - kMarkerBytes] = kMarker;
        target[size - 1] = kLastRestart;
        memcpy(target + size, slices[i].file + offset, added);
        size += added;
    }
    return size;
}

}  // namespace

size_t encodeJpeg(YuvPicture const& picture, int quality, std::vector<uint8_t> const& exif,
                  uint8_t* target, size_t capacity) {
    std::vector<Slice> slices = cut(picture.height);
    std::vector<uint8_t> const noExif;
    inParallel(static_cast<int>(slices.size()), [&] {
        auto const encoder = std::make_shared<JpegSliceEncoder>(picture.width);
        return [&, encoder](int index) {
            Slice& slice = slices[static_cast<size_t>(index)];
            bool const isFirst = index == 0;
            if (!isFirst) {
                slice.bytes.reset(new uint8_t[capacity]);  // pages never written cost nothing
            }
            slice.file = isFirst ? target : slice.bytes.get();
            YuvPicture const part =
                    cropped(picture, {0, slice.firstRow, picture.width, slice.rows});
            slice.size =
                    encoder->encode(part, quality, isFirst ? exif : noExif, slice.file, capacity);
        };
    });
    bool const allFit = std::all_of(slices.begin(), slices.end(),
                                    [](Slice const& slice) { return slice.size != 0; });
    return allFit ? join(slices, picture.height, capacity) : 0;
}

}  // namespace quen::host::isp
