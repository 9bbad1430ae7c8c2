#include "inputs/RawSamples.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>

#include "inputs/MappedFile.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

constexpr short kLittleEndian = 0x4949;  // "II", the byte order of this machine
constexpr unsigned kWordBits = 16;

/** What LibRaw met while it unpacked: it goes on after damaged data. */
struct Damage {
    bool isThere = false;
    bool isEnd = false;  // the file has ended
};

/** Records damage. */
template <typename Offset>  // its type differs between versions of LibRaw
void noteDamage(void* damage, char const* /*file*/, Offset offset) {
    auto* const noted = static_cast<Damage*>(damage);
    noted->isThere = true;
    noted->isEnd = noted->isEnd || static_cast<int>(offset) == -1;
}

/** Whether every sample is 0, as they stay where LibRaw makes nothing of the compressed data. */
bool isBlank(libraw_data_t const& data) {
    ushort const* const samples = data.rawdata.raw_image;
    size_t const count = data.sizes.raw_pitch / sizeof(ushort) * data.sizes.raw_height;
    return samples && std::all_of(samples, samples + count, [](ushort s) { return s == 0; });
}

/** Whether the linearisation table of a DNG is the identity. */
bool isLinear(ushort const (&curve)[0x10000]) {
    ushort value = 0;
    return std::all_of(std::begin(curve), std::end(curve),
                       [&](ushort entry) { return entry == value++; });
}

/** Whether LibRaw would derive black levels from masked areas. */
bool hasMaskedAreas(libraw_image_sizes_t const& sizes) {
    return std::any_of(&sizes.mask[0][0], &sizes.mask[0][0] + sizeof(sizes.mask) / sizeof(int),
                       [](int edge) { return edge != 0; });
}

/** Whether the file has uncompressed little-endian 16-bit samples that need no processing. */
bool arePlainWords(LibRaw& raw) {
    libraw_decoder_info_t decoder = {};
    auto const& unpacker = raw.get_internal_data_pointer()->unpacker_data;
    return raw.get_decoder_info(&decoder) == LIBRAW_SUCCESS &&
           std::strcmp(decoder.decoder_name, "packed_dng_load_raw()") == 0 &&
           unpacker.tiff_bps == kWordBits && unpacker.tiff_samples == 1 &&
           unpacker.order == kLittleEndian && raw.imgdata.idata.filters != 0 &&
           isLinear(raw.imgdata.color.curve) && !hasMaskedAreas(raw.imgdata.sizes);
}

/** The samples in the mapped file; none when it is too short or misaligned. */
RawSamples samplesInFile(LibRaw& raw, std::string const& path) {
    auto const file = MappedFile::open(path);
    auto const& sizes = raw.imgdata.sizes;
    auto const offset = raw.get_internal_data_pointer()->unpacker_data.data_offset;
    size_t const bytes = size_t{sizes.raw_width} * sizes.raw_height * sizeof(uint16_t);
    bool const isAligned = offset % static_cast<INT64>(alignof(uint16_t)) == 0;
    if (offset < 0 || !isAligned || file->size() < static_cast<size_t>(offset) ||
        file->size() - static_cast<size_t>(offset) < bytes) {
        return {};
    }
    return {reinterpret_cast<uint16_t const*>(file->data() + offset), sizes.raw_width, file};
}

constexpr size_t divideUp(size_t value, size_t divisor) {
    return (value + divisor - 1) / divisor;
}

/** The 32-bit number at a place in a file, in the file's own order of bytes; none beyond its end.
 */
std::optional<uint32_t> numberAt(MappedFile const& file, size_t offset, bool isLittleEndian) {
    if (file.size() < sizeof(uint32_t) || offset > file.size() - sizeof(uint32_t)) {
        return std::nullopt;
    }
    uint8_t const* const bytes = file.data() + offset;
    uint32_t number = 0;
    for (size_t i = 0; i < sizeof(number); ++i) {
        number |= uint32_t{bytes[i]} << 8 * (isLittleEndian ? i : sizeof(number) - 1 - i);
    }
    return number;
}

/**
 * Throws when a tile of a DNG's losslessly compressed mosaic is no JPEG: LibRaw leaves off there
 * without a word, and the samples stay what the memory held before.
 */
void checkLosslessTiles(LibRaw& raw, std::string const& path) {
    libraw_decoder_info_t decoder = {};
    if (raw.get_decoder_info(&decoder) != LIBRAW_SUCCESS ||
        std::strcmp(decoder.decoder_name, "lossless_dng_load_raw()") != 0) {
        return;
    }
    auto const file = MappedFile::open(path);
    auto const& sizes = raw.imgdata.sizes;
    auto const& unpacker = raw.get_internal_data_pointer()->unpacker_data;
    bool const isTiled = unpacker.tile_length < INT_MAX && unpacker.tile_width != 0;
    size_t const count = isTiled ? divideUp(sizes.raw_width, unpacker.tile_width) *
                                           divideUp(sizes.raw_height, unpacker.tile_length)
                                 : 1;
    for (size_t i = 0; i < count; ++i) {
        size_t const list = static_cast<size_t>(unpacker.data_offset);
        auto const first = isTiled ? numberAt(*file, list + i * sizeof(uint32_t),
                                              unpacker.order == kLittleEndian)
                                   : std::optional<uint32_t>(list);
        auto const start = first ? numberAt(*file, *first, false) : std::nullopt;
        if (!start) {
            throw Failure("ends before the picture does");
        }
        if (*start >> 8 != 0xffd8ff) {
            throw Failure(
                    "cannot be decompressed: its samples are not the JPEG they are said to be",
                    "the file is damaged");
        }
    }
}

/** Unpacks the samples. @throws Failure when the file is damaged or cannot be read */
RawSamples unpackedSamples(std::shared_ptr<LibRaw> const& raw, std::string const& path) {
    checkLosslessTiles(*raw, path);
    Damage damage;
    raw->set_dataerror_handler(noteDamage, &damage);
    int const result = raw->unpack();
    raw->set_dataerror_handler(nullptr, nullptr);
    if (damage.isEnd) {
        throw Failure("ends before the picture does");
    }
    bool const isData = result == LIBRAW_IO_ERROR || result == LIBRAW_DATA_ERROR;
    if (isData || (result == LIBRAW_SUCCESS && isBlank(raw->imgdata))) {
        throw Failure("cannot be decompressed: LibRaw makes nothing of its samples",
                      "they are damaged, or compressed in a way that it does not know");
    }
    if (result != LIBRAW_SUCCESS) {
        throw Failure(std::string("cannot be read: ") + libraw_strerror(result));
    }
    if (damage.isThere) {
        throw Failure("is damaged: LibRaw could not read all of its samples");
    }
    return {raw->imgdata.rawdata.raw_image, raw->imgdata.sizes.raw_pitch / sizeof(uint16_t), raw};
}

}  // namespace

RawSamples readRawSamples(std::shared_ptr<LibRaw> const& raw, std::string const& path) {
    RawSamples const plain = arePlainWords(*raw) ? samplesInFile(*raw, path) : RawSamples();
    return plain.first ? plain : unpackedSamples(raw, path);
}

}  // namespace quen::reprocess
