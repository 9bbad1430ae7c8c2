#include <new>

#include "outputs/PngFile.h"
#include "outputs/RgbFileModule.h"
#include "outputs/TiffFile.h"

namespace quen::reprocess {
namespace {

class LibraryRgbFiles final : public RgbFileModule {
  public:
    std::vector<uint8_t> png(PixelRows& rows, std::vector<uint8_t> const& exif,
                             std::string& problem) const override {
        return writePng(rows, exif, problem);
    }

    std::vector<uint8_t> tiff(PixelRows& rows, std::vector<uint8_t> const& exif,
                              std::string& problem) const override {
        return writeTiff(rows, exif, problem);
    }
};

}  // namespace
}  // namespace quen::reprocess

extern "C" quen::reprocess::RgbFileModule const* quenRgbFileModule();

/** What the program looks up. */
quen::reprocess::RgbFileModule const* quenRgbFileModule() {
    static quen::reprocess::LibraryRgbFiles const files;
    return &files;
}
