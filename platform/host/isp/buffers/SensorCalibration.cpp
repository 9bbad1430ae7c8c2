#include "host/isp/buffers/SensorCalibration.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace quen::host::isp {

namespace {

constexpr size_t kRequestNoOffset = 0;
constexpr size_t kFrameNumberOffset = 12;
constexpr size_t kUsedBytesOffset = 32;
constexpr size_t kHeaderBytes = 36;
constexpr size_t kCalibrationOffset = 64;

constexpr uint32_t kMagic = 0x4e555451;
constexpr uint32_t kVersion = 1;

constexpr int32_t kMinLevelBits = 8;
constexpr int32_t kMaxLevelBits = 16;
constexpr float kMaxGain = 1024;

/** The calibration as it lies in the buffer. */
struct CalibrationRecord {
    uint32_t magic;
    uint32_t version;
    int32_t bayerOrder;
    int32_t levelBits;
    float blackLevel[4];
    float whiteLevel;
    float wbGains[4];
    float colorMatrix[9];
    float exposureGain;
    float noiseShot;
    float noiseRead;
    float denoiseStrength;
    float sharpening;
};

static_assert(sizeof(CalibrationRecord) == kCalibrationUsedBytes - kCalibrationOffset,
              "the record has no padding");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "records are copied as they lie");

/** Above zero, and finite. */
bool isGain(float value) {
    return std::isfinite(value) && value > 0 && value <= kMaxGain;
}

/** Zero or more, and finite. */
bool isAmount(float value) {
    return std::isfinite(value) && value >= 0;
}

/** Whether depth, white and black levels are valid. */
bool areLevelsSound(CalibrationRecord const& record) {
    if (record.levelBits < kMinLevelBits || record.levelBits > kMaxLevelBits) {
        return false;
    }
    float const top = static_cast<float>((1 << record.levelBits) - 1);
    return std::isfinite(record.whiteLevel) && record.whiteLevel <= top &&
           std::all_of(std::begin(record.blackLevel), std::end(record.blackLevel),
                       [&](float black) { return isAmount(black) && black < record.whiteLevel; });
}

/** Whether every value of a record is valid. */
bool isSound(CalibrationRecord const& record) {
    return record.bayerOrder >= static_cast<int32_t>(BayerOrder::RGGB) &&
           record.bayerOrder <= static_cast<int32_t>(BayerOrder::BGGR) && areLevelsSound(record) &&
           std::all_of(std::begin(record.wbGains), std::end(record.wbGains), isGain) &&
           std::all_of(std::begin(record.colorMatrix), std::end(record.colorMatrix),
                       [](float value) { return std::fabs(value) <= kMaxGain; }) &&
           isGain(record.exposureGain) && isAmount(record.noiseShot) &&
           isAmount(record.noiseRead) && isAmount(record.denoiseStrength) &&
           isAmount(record.sharpening);
}

/** Reads an int32 at an offset. */
int32_t readInt(uint8_t const* bytes, size_t offset) {
    int32_t value;
    memcpy(&value, bytes + offset, sizeof(value));
    return value;
}

/** Writes an int32 at an offset. */
void writeInt(uint8_t* bytes, size_t offset, int32_t value) {
    memcpy(bytes + offset, &value, sizeof(value));
}

}  // namespace

size_t encodeCalibration(CalibrationHeader const& header, SensorCalibration const& calibration,
                         void* buffer, size_t size) {
    if (size < kCalibrationUsedBytes) {
        return 0;
    }
    CalibrationRecord record;
    record.magic = kMagic;
    record.version = kVersion;
    record.bayerOrder = static_cast<int32_t>(calibration.bayerOrder);
    record.levelBits = calibration.levelBits;
    std::copy(std::begin(calibration.blackLevel), std::end(calibration.blackLevel),
              record.blackLevel);
    record.whiteLevel = calibration.whiteLevel;
    std::copy(std::begin(calibration.wbGains), std::end(calibration.wbGains), record.wbGains);
    std::copy(std::begin(calibration.colorMatrix), std::end(calibration.colorMatrix),
              record.colorMatrix);
    record.exposureGain = calibration.exposureGain;
    record.noiseShot = calibration.noiseShot;
    record.noiseRead = calibration.noiseRead;
    record.denoiseStrength = calibration.denoiseStrength;
    record.sharpening = calibration.sharpening;

    auto* const bytes = static_cast<uint8_t*>(buffer);
    memset(bytes, 0, kCalibrationOffset);
    writeInt(bytes, kRequestNoOffset, header.requestNo);
    writeInt(bytes, kFrameNumberOffset, header.frameNumber);
    writeInt(bytes, kUsedBytesOffset, static_cast<int32_t>(kCalibrationUsedBytes));
    memcpy(bytes + kCalibrationOffset, &record, sizeof(record));
    return kCalibrationUsedBytes;
}

CalibrationHeader decodeCalibrationHeader(void const* buffer, size_t size) {
    CalibrationHeader header;
    if (size < kHeaderBytes) {
        return header;
    }
    auto const* const bytes = static_cast<uint8_t const*>(buffer);
    header.requestNo = readInt(bytes, kRequestNoOffset);
    header.frameNumber = readInt(bytes, kFrameNumberOffset);
    header.totalUsedBytes = readInt(bytes, kUsedBytesOffset);
    return header;
}

CalibrationState decodeCalibration(void const* buffer, size_t size,
                                   SensorCalibration& calibration) {
    if (size < kCalibrationUsedBytes) {
        return CalibrationState::Absent;
    }
    CalibrationRecord record;
    memcpy(&record, static_cast<uint8_t const*>(buffer) + kCalibrationOffset, sizeof(record));
    if (record.magic != kMagic) {
        return CalibrationState::Absent;
    }
    if (record.version != kVersion || !isSound(record)) {
        return CalibrationState::Malformed;
    }
    calibration.bayerOrder = static_cast<BayerOrder>(record.bayerOrder);
    calibration.levelBits = record.levelBits;
    std::copy(std::begin(record.blackLevel), std::end(record.blackLevel), calibration.blackLevel);
    calibration.whiteLevel = record.whiteLevel;
    std::copy(std::begin(record.wbGains), std::end(record.wbGains), calibration.wbGains);
    std::copy(std::begin(record.colorMatrix), std::end(record.colorMatrix),
              calibration.colorMatrix);
    calibration.exposureGain = record.exposureGain;
    calibration.noiseShot = record.noiseShot;
    calibration.noiseRead = record.noiseRead;
    calibration.denoiseStrength = record.denoiseStrength;
    calibration.sharpening = record.sharpening;
    return CalibrationState::Present;
}

}  // namespace quen::host::isp
