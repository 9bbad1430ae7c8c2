#include "inputs/EvenSize.h"

#include "support/Text.h"

namespace quen::reprocess {

void setEvenSize(uint32_t width, uint32_t height, Capture& capture) {
    capture.width = width & ~1u;
    capture.height = height & ~1u;
    bool const oddWidth = width != capture.width;
    bool const oddHeight = height != capture.height;
    if (oddWidth || oddHeight) {
        char const* const lost = !oddHeight  ? "column is"
                                 : !oddWidth ? "row is"
                                             : "column and row are";
        capture.notes.push_back(
                format("is %ux%u pixels; chroma of 4:2:0 goes by pairs, so its last %s left out",
                       width, height, lost));
    }
}

}  // namespace quen::reprocess
