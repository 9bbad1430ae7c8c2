#include "DngFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <vector>

#include "demo/Matrix3.h"

namespace quenbench {

namespace {

constexpr uint32_t kFieldsOffset = 8;
constexpr uint32_t kFractionsOffset = 512;
constexpr uint32_t kSamplesOffset = 4096;
constexpr uint32_t kDenominator = 1000000;

enum Type : uint16_t { kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kSigned = 10 };

struct Field {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    uint32_t value;
};
static_assert(sizeof(Field) == 12, "as in the file");

/** XYZ under daylight to the sensor's unbalanced colours, then the sensor's white. */
std::vector<double> matrixAndWhite(quen::reprocess::SensorCalibration const& calibration) {
    using quen::reprocess::Matrix3;
    constexpr Matrix3 kXyzOfSrgb = {0.412453, 0.357580, 0.180423, 0.212671, 0.715160,
                                    0.072169, 0.019334, 0.119193, 0.950227};
    Matrix3 toSrgb;
    std::copy(std::begin(calibration.colorMatrix), std::end(calibration.colorMatrix),
              toSrgb.begin());
    Matrix3 const balanced = quen::reprocess::product(quen::reprocess::inverse(toSrgb),
                                                      quen::reprocess::inverse(kXyzOfSrgb));
    double const gains[3] = {calibration.wbGains[quen::reprocess::kRed],
                             calibration.wbGains[quen::reprocess::kGreenOfRedRows],
                             calibration.wbGains[quen::reprocess::kBlue]};
    std::vector<double> values;
    for (size_t i = 0; i < balanced.size(); ++i) {
        values.push_back(balanced[i] / gains[i / 3]);
    }
    for (double const gain : gains) {
        values.push_back(1 / gain);
    }
    return values;
}

std::vector<uint8_t> header(quen::reprocess::Capture const& capture) {
    uint32_t const white = static_cast<uint32_t>(capture.calibration.whiteLevel);
    uint32_t const black = static_cast<uint32_t>(capture.calibration.blackLevel[0]);
    uint32_t const bytes = capture.width * capture.height * 2;
    Field const fields[] = {
            {256, kLong, 1, capture.width},                   // width
            {257, kLong, 1, capture.height},                  // height
            {258, kShort, 1, 16},                             // bits a sample
            {259, kShort, 1, 1},                              // no compression
            {262, kShort, 1, 32803},                          // a colour filter array
            {271, kAscii, 2, 'Q'},                            // make
            {272, kAscii, 2, 'D'},                            // model
            {273, kLong, 1, kSamplesOffset},                  // where the strip begins
            {274, kShort, 1, 1},                              // upright
            {277, kShort, 1, 1},                              // samples a pixel
            {278, kLong, 1, capture.height},                  // rows of the strip
            {279, kLong, 1, bytes},                           // bytes of the strip
            {33421, kShort, 2, 0x00020002},                   // pattern of 2 x 2
            {33422, kByte, 4, 0x02010100},                    // red, green, green, blue
            {50706, kByte, 4, 0x00000401},                    // DNG 1.4
            {50708, kAscii, 2, 'D'},                          // unique model
            {50714, kShort, 1, black},                        // black level
            {50717, kLong, 1, white},                         // white level
            {50721, kSigned, 9, kFractionsOffset},            // matrix from XYZ
            {50728, kRational, 3, kFractionsOffset + 9 * 8},  // neutral as shot
            {50778, kShort, 1, 21},                           // of D65
    };
    std::vector<uint8_t> bytesOf(kSamplesOffset);
    auto const put = [&](size_t offset, void const* data, size_t size) {
        auto const* const first = static_cast<uint8_t const*>(data);
        std::copy(first, first + size, bytesOf.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    uint16_t const count = std::size(fields);
    put(0, "II*\0\10\0\0\0", kFieldsOffset);
    put(kFieldsOffset, &count, sizeof(count));
    put(kFieldsOffset + sizeof(count), fields, sizeof(fields));
    size_t offset = kFractionsOffset;
    for (double const value : matrixAndWhite(capture.calibration)) {
        int32_t const fraction[2] = {static_cast<int32_t>(std::lround(value * kDenominator)),
                                     kDenominator};
        put(offset, fraction, sizeof(fraction));
        offset += sizeof(fraction);
    }
    return bytesOf;
}

}  // namespace

bool writeDng(quen::reprocess::Capture const& capture, std::string const& path) {
    FILE* const file = std::fopen(path.c_str(), "wb");
    if (!file) {
        return false;
    }
    std::vector<uint8_t> const front = header(capture);
    size_t const samples = size_t{capture.width} * capture.height;
    bool const isWritten = std::fwrite(front.data(), 1, front.size(), file) == front.size() &&
                           std::fwrite(std::get<quen::reprocess::BayerImage>(capture.image).samples,
                                       sizeof(uint16_t), samples, file) == samples;
    return std::fclose(file) == 0 && isWritten;
}

}  // namespace quenbench
