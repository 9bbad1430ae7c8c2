#include "inputs/CompressedSize.h"

#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {

void checkCompressedSize(size_t bytes, size_t width, size_t height) {
    // A bit for a block of 8 x 8, as JPEG codes what is all one colour; all else takes more.
    constexpr size_t kMostPixelsAByte = size_t{8} * 8 * 8;
    if (width * height / kMostPixelsAByte > bytes) {
        throw Failure(
                format("is damaged: %zux%zu pixels cannot be in %zu bytes", width, height, bytes));
    }
}

}  // namespace quen::reprocess
