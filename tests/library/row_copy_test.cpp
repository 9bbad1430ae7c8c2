#include <gtest/gtest.h>

#include <vector>

#include <quenOfflineDevice/RowCopy.h>

namespace {

constexpr uint8_t kUntouched = 0xEE;

/** What the copies are to leave behind, byte by byte. */
std::vector<uint8_t> expected(std::vector<uint8_t> const& source, size_t rowBytes, size_t offset,
                              size_t stride, size_t rows, bool isSwapped) {
    std::vector<uint8_t> result(offset + stride * rows + rowBytes, kUntouched);
    for (size_t i = 0; i < rows * rowBytes; ++i) {
        size_t const from = isSwapped ? i ^ 1 : i;
        result[offset + i / rowBytes * stride + i % rowBytes] = source[from];
    }
    return result;
}

TEST(RowCopy, RowsOfEverySizeAndPlace) {
    struct Case {
        char const* name;
        size_t rowBytes, offset, stride, rows;
    };
    for (Case const& c : {Case{"small", 30, 0, 64, 7},
                          {"past the caches", 4094, 0, 4096, 4111},
                          {"past the caches, no gaps", 4096, 0, 4096, 4111},
                          {"large, rows at odd places", 4094, 1, 4096, 4111},
                          {"large, an odd stride", 4094, 0, 4097, 4111},
                          {"large, rows that overlap", 4094, 0, 4080, 4111},
                          {"large, three rows", 6 << 20, 0, 6 << 20, 3}}) {
        SCOPED_TRACE(c.name);
        std::vector<uint8_t> source(c.rowBytes * c.rows);
        for (size_t i = 0; i < source.size(); ++i) {
            source[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
        }
        for (bool const isSwapped : {false, true}) {
            std::vector<uint8_t> memory(c.offset + c.stride * c.rows + c.rowBytes + 16, kUntouched);
            auto* target = memory.data();
            target += -reinterpret_cast<uintptr_t>(target) % 16;
            uint8_t* const first = target + c.offset;
            isSwapped ? copySwappedRows(source.data(), c.rowBytes / 2, first, c.stride, c.rows)
                      : copyRows(source.data(), c.rowBytes, first, c.stride, c.rows);
            std::vector<uint8_t> const wanted =
                    expected(source, c.rowBytes, c.offset, c.stride, c.rows, isSwapped);
            EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), target)) << isSwapped;
        }
    }
}

}  // namespace
