#include "inputs/RawSamples.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <cstring>

#include "inputs/MappedFile.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

constexpr short kLittleEndian = 0x4949;  // "II", the byte order of this machine
constexpr unsigned kWordBits = 16;

/** LibRaw goes on after damaged data; this records that there was some. */
template <typename Offset>  // its type differs between versions of LibRaw
void noteDamage(void* damaged, char const* /*file*/, Offset /*offset*/) {
    *static_cast<bool*>(damaged) = true;
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

/** Unpacks the samples. @throws Failure when the file is damaged or cannot be read */
RawSamples unpackedSamples(std::shared_ptr<LibRaw> const& raw) {
    bool damaged = false;
    raw->set_dataerror_handler(noteDamage, &damaged);
    int const result = raw->unpack();
    raw->set_dataerror_handler(nullptr, nullptr);
    if (result != LIBRAW_SUCCESS) {
        throw Failure(std::string("cannot be read: ") + libraw_strerror(result));
    }
    if (damaged) {
        throw Failure("is damaged: LibRaw could not read all of its samples");
    }
    return {raw->imgdata.rawdata.raw_image, raw->imgdata.sizes.raw_pitch / sizeof(uint16_t), raw};
}

}  // namespace

RawSamples readRawSamples(std::shared_ptr<LibRaw> const& raw, std::string const& path) {
    RawSamples const plain = arePlainWords(*raw) ? samplesInFile(*raw, path) : RawSamples();
    return plain.first ? plain : unpackedSamples(raw);
}

}  // namespace quen::reprocess
