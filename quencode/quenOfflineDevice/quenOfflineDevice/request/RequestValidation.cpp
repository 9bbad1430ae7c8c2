#include "quenOfflineDevice/request/RequestValidation.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>

#include <system/graphics.h>

namespace quen {
namespace {

enum class Sampling { Whole, Chroma420 };

/** Formats whose packed size follows from width and height. */
struct PackedFormat {
    int32_t format;
    int64_t bitsPerSample;
    Sampling sampling;
};

constexpr PackedFormat kPackedFormats[] = {
        {HAL_PIXEL_FORMAT_RAW10, 10, Sampling::Whole},
        {HAL_PIXEL_FORMAT_RAW16, 16, Sampling::Whole},
        {HAL_PIXEL_FORMAT_YCBCR_420_888, 8, Sampling::Chroma420},
        {HAL_PIXEL_FORMAT_YCRCB_420_SP, 8, Sampling::Chroma420},
};

/** Bytes of a buffer's picture; 0 for a format of unknown size. */
int64_t pictureBytes(ImageBuffer const& buffer) {
    for (PackedFormat const& packed : kPackedFormats) {
        if (packed.format != buffer.format) {
            continue;
        }
        int64_t samples = int64_t{buffer.width} * buffer.height;
        if (packed.sampling == Sampling::Chroma420) {
            samples += int64_t{2} * (buffer.width / 2) * (buffer.height / 2);
        }
        return samples * packed.bitsPerSample / 8;
    }
    return 0;
}

/** Bytes of the memory behind a descriptor; negative when unknown. */
int64_t memoryBytes(int descriptor) {
    struct stat memory = {};
    if (fstat(descriptor, &memory) != 0) {
        return -1;
    }
    if (S_ISREG(memory.st_mode)) {
        return memory.st_size;
    }
    off_t const end = lseek(descriptor, 0, SEEK_END);  // gives the size of a dma-buf
    return end > 0 ? end : -1;
}

/**
 * Whether the memory behind a buffer's descriptor ends before the buffer does: an access would
 * raise SIGBUS.
 */
bool isMemoryShort(ImageBuffer const& buffer) {
    int64_t const bytes = memoryBytes(buffer.buffer->data[0]);
    return bytes >= 0 && bytes < buffer.size;
}

/** @param isMapped whether the library itself reads or writes the buffer */
char const* findBufferFault(ImageBuffer const& buffer, bool isMapped) {
    if (buffer.buffer == nullptr) {
        return "a buffer has no handle; every buffer needs one";
    }
    if (buffer.size < 1 || buffer.width < 1 || buffer.height < 1) {
        return "a buffer's size, width or height is below 1";
    }
    if (buffer.size < pictureBytes(buffer)) {
        return "a buffer is smaller than its picture; its size is that of the whole mapping";
    }
    if (isMapped && buffer.buffer->numFds < 1) {
        return "a buffer's handle has no descriptor to map";
    }
    if (isMapped && isMemoryShort(buffer)) {
        return "a buffer's memory is smaller than the size it states";
    }
    return nullptr;
}

}  // namespace

char const* findRequestFault(PostProcessParams const& params, bool waits) {
    if (params.input_buffer == nullptr) {
        return "there is no input buffer; a request needs one";
    }
    if (params.output_buffers.empty()) {
        return "there are no output buffers; a request needs at least one";
    }
    ImageBuffer const& input = *params.input_buffer;
    char const* const fault =
            findBufferFault(input, input.format == HAL_PIXEL_FORMAT_YCBCR_420_888);
    if (fault != nullptr) {
        return fault;
    }
    for (ImageBuffer const* const output : params.output_buffers) {
        if (output == nullptr) {
            return "an output buffer is null";
        }
        char const* const outputFault =
                findBufferFault(*output, waits && output->format == HAL_PIXEL_FORMAT_BLOB);
        if (outputFault != nullptr) {
            return outputFault;
        }
    }
    return nullptr;
}

}  // namespace quen
