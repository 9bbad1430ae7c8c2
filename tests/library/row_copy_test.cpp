#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include <quenOfflineDevice/request/RowCopy.h>

namespace {

constexpr uint8_t kUntouched = 0xEE;

/** What the copies are to leave behind, byte by byte. */
std::vector<uint8_t> expected(std::vector<uint8_t> const& source, size_t rowBytes, size_t offset,
                              size_t stride, size_t rows, size_t endBytes, bool isSwapped) {
    std::vector<uint8_t> result(offset + stride * rows + rowBytes + endBytes, kUntouched);
    for (size_t row = 0; row < rows; ++row) {
        uint8_t* const target = result.data() + offset + row * stride;
        for (size_t i = 0; i < rowBytes; ++i) {
            target[i] = source[row * rowBytes + (isSwapped ? i ^ 1 : i)];
        }
        std::fill_n(target + rowBytes, endBytes, uint8_t{0});
    }
    return result;
}

TEST(RowCopyTest, RowsOfEverySizeAndPlace) {
    struct Case {
        char const* name;
        size_t rowBytes, offset, stride, rows, endBytes;
    };
    for (Case const& c : {Case{"gaps", 30, 0, 64, 7, 20},
                          {"no gaps", 4096, 0, 4096, 41, 0},
                          {"odd places", 4094, 1, 4096, 41, 2},
                          {"odd stride", 4094, 0, 4097, 41, 0},
                          {"rows that overlap", 4094, 0, 4080, 41, 0},
                          {"ends that overlap", 4096, 0, 4096, 41, 3}}) {
        SCOPED_TRACE(c.name);
        std::vector<uint8_t> source(c.rowBytes * c.rows);
        for (size_t i = 0; i < source.size(); ++i) {
            source[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
        }
        for (bool const isSwapped : {false, true}) {
            std::vector<uint8_t> memory(c.offset + c.stride * c.rows + c.rowBytes + c.endBytes + 16,
                                        kUntouched);
            auto* target = memory.data();
            target += -reinterpret_cast<uintptr_t>(target) % 16;
            uint8_t* const first = target + c.offset;
            quen::Rows const rows{first, c.stride, c.rows};
            isSwapped ? quen::copySwappedRows(source.data(), c.rowBytes / 2, rows, c.endBytes)
                      : quen::copyRows(source.data(), c.rowBytes, rows, c.endBytes);
            std::vector<uint8_t> const wanted =
                    expected(source, c.rowBytes, c.offset, c.stride, c.rows, c.endBytes, isSwapped);
            EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), target)) << isSwapped;
        }
    }
}

}  // namespace
