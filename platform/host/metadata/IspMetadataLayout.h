#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::host {

/** The ISP metadata buffer. All little-endian; records follow one another from the first one on. */
struct IspHeader {
    uint8_t reserved[12];
    uint32_t entryCount;
    uint32_t firstRecordOffset;
};

static_assert(offsetof(IspHeader, entryCount) == 12, "wrong offset");
static_assert(offsetof(IspHeader, firstRecordOffset) == 16, "wrong offset");
static_assert(sizeof(IspHeader) == 20, "wrong size");

inline constexpr size_t kIspDataBytes = 40;

struct IspRecordLayout {
    uint32_t tag;
    uint32_t type;
    uint32_t dataSize;  ///< bytes
    uint8_t reserved[4];
    uint8_t data[kIspDataBytes];
};

static_assert(offsetof(IspRecordLayout, data) == 16, "wrong offset");
static_assert(sizeof(IspRecordLayout) == 56, "wrong size");

/** Bytes of an item by type: unsigned 8-bit, int32, int64, float. */
inline constexpr uint32_t kIspItemBytes[] = {1, 4, 8, 4};
inline constexpr uint32_t kIspTypeCount = sizeof(kIspItemBytes) / sizeof(kIspItemBytes[0]);

/** Return codes of the writer. */
enum IspWriteError : int {
    kIspWritten = 0,
    kIspDataTooLarge = 1,  ///< more than a record holds
    kIspUnknownType = 2,
    kIspNoData = 3,          ///< a size without data
    kIspBrokenItem = 4,      ///< not a whole number of items
    kIspNotInitialised = 5,  ///< the vector holds no buffer that records can be appended to
    kIspNoMemory = 6,
};

}  // namespace quen::host
