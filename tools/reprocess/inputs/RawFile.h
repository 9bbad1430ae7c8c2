#pragma once

#include <libraw/libraw.h>

#include <cstdint>
#include <optional>
#include <string>

namespace quen::reprocess {

/** A part of a raw file's visible area, in pixels. */
struct VisiblePart {
    uint32_t left;
    uint32_t top;
    uint32_t width;
    uint32_t height;
};

/** A camera's raw file, opened by LibRaw. Too large for the stack. */
class RawFile : public LibRaw {
  public:
    /** @throws Failure when LibRaw does not know the file, or only guesses by its size */
    explicit RawFile(std::string const& path);

    /**
     * The part of the visible area that the file means to be shown: a DNG's default crop, else all
     * of it.
     *
     * @throws Failure when there is no visible area of 2x2 pixels or more
     */
    VisiblePart shownPart() const;

  private:
    [[noreturn]] void throwUnknown(int result, std::string const& path) const;
    bool isGuessed(std::string const& path) const;
    std::optional<VisiblePart> defaultCrop() const;
};

}  // namespace quen::reprocess
