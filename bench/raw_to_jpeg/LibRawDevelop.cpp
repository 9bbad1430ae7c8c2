// Develops a raw file to a JPEG with LibRaw and libjpeg-turbo:
//   libraw-develop INPUT OUTPUT.jpg DEMOSAIC [WIDTHxHEIGHT BLACK WHITE RED GREEN BLUE]
// DEMOSAIC is LibRaw's user_qual, -1 for its default. With a size the input is headerless: RGGB in
// words of 16 bits, with the levels and the white balance that follow, and no colour matrix.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <omp.h>

#include <jpeglib.h>
#include <libraw/libraw.h>

namespace {

constexpr int kQuality = 95;
constexpr unsigned kChannels = 3;

[[noreturn]] void fail(char const* what, char const* why) {
    std::fprintf(stderr, "libraw-develop: %s: %s\n", what, why);
    std::exit(1);
}

void check(int result, char const* what) {
    if (result != LIBRAW_SUCCESS) {
        fail(what, libraw_strerror(result));
    }
}

/** Turns off what LibRaw derives from the content of a picture, such as automatic brightness. */
void setUp(libraw_output_params_t& params, int demosaic) {
    params.user_qual = demosaic;
    params.use_camera_wb = 1;
    params.output_color = 1;  // sRGB
    params.output_bps = 8;
    params.gamm[0] = 1 / 2.4;  // sRGB's curve
    params.gamm[1] = 12.92;
    params.no_auto_bright = 1;
    params.adjust_maximum_thr = 0;
    params.highlight = 0;
}

std::vector<unsigned char> readFile(char const* path) {
    FILE* const file = std::fopen(path, "rb");
    if (!file || std::fseek(file, 0, SEEK_END) != 0) {
        fail(path, "cannot be read");
    }
    std::vector<unsigned char> bytes(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        fail(path, "cannot be read");
    }
    std::fclose(file);
    return bytes;
}

/** @return the samples, which LibRaw reads from */
std::vector<unsigned char> openHeaderless(LibRaw& raw, char** arguments) {
    std::vector<unsigned char> bytes = readFile(arguments[1]);
    unsigned width = 0;
    unsigned height = 0;
    if (std::sscanf(arguments[4], "%ux%u", &width, &height) != 2) {
        fail(arguments[4], "is no size");
    }
    libraw_output_params_t& params = raw.imgdata.params;
    params.user_sat = std::atoi(arguments[6]);
    for (int channel = 0; channel < 4; ++channel) {
        params.user_mul[channel] =
                static_cast<float>(std::atof(arguments[channel == 3 ? 8 : 7 + channel]));
    }
    params.use_camera_wb = 0;
    params.output_color = 0;
    check(raw.open_bayer(bytes.data(), static_cast<unsigned>(bytes.size()),
                         static_cast<unsigned short>(width), static_cast<unsigned short>(height), 0,
                         0, 0, 0, 0, LIBRAW_OPENBAYER_RGGB, 0, 0,
                         static_cast<unsigned>(std::atoi(arguments[5]))),
          arguments[1]);
    return bytes;
}

/** Encodes 8-bit RGB as 4:2:0 into a file. */
void writeJpeg(unsigned char* pixels, int width, int height, size_t stride, char const* path) {
    FILE* const file = std::fopen(path, "wb");
    if (!file) {
        fail(path, "cannot be created");
    }
    jpeg_compress_struct info = {};
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = kChannels;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);  // 4:2:0
    jpeg_set_quality(&info, kQuality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = pixels + info.next_scanline * stride;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    if (std::fclose(file) != 0) {
        fail(path, "cannot be written");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--about") == 0) {
        std::printf("LibRaw %s, %d threads\n", LibRaw::version(), omp_get_max_threads());
        return 0;
    }
    if (argc != 4 && argc != 10) {
        fail("usage", "INPUT OUTPUT.jpg DEMOSAIC [WIDTHxHEIGHT BLACK WHITE RED GREEN BLUE]");
    }
    static LibRaw raw;  // too large for the stack
    setUp(raw.imgdata.params, std::atoi(argv[3]));
    std::vector<unsigned char> samples;
    if (argc == 10) {
        samples = openHeaderless(raw, argv);
    } else {
        check(raw.open_file(argv[1]), argv[1]);
    }
    check(raw.unpack(), "unpack");
    std::vector<unsigned char>().swap(samples);
    check(raw.dcraw_process(), "process");
    int width = 0;
    int height = 0;
    int colours = 0;
    int bits = 0;
    raw.get_mem_image_format(&width, &height, &colours, &bits);
    if (colours != kChannels || bits != 8) {
        fail(argv[1], "was not developed to 8-bit RGB");
    }
    size_t const stride = kChannels * static_cast<size_t>(width);
    std::vector<unsigned char> pixels(stride * static_cast<size_t>(height));
    check(raw.copy_mem_image(pixels.data(), static_cast<int>(stride), 0), "copy");
    raw.recycle();
    writeJpeg(pixels.data(), width, height, stride, argv[2]);
    return 0;
}
