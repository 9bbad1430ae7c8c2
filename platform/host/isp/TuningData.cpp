#include "host/isp/TuningData.h"

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
constexpr size_t kFactsOffset = 64;

constexpr uint32_t kMagic = 0x4e555451;
constexpr uint32_t kVersion = 1;

constexpr int32_t kMinLevelBits = 8;
constexpr int32_t kMaxLevelBits = 16;
constexpr float kMaxGain = 1024;

/** The facts as they lie in the buffer. */
struct FactsRecord {
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

static_assert(sizeof(FactsRecord) == kTuningUsedBytes - kFactsOffset, "the record has no padding");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "records are copied as they lie");

bool isGain(float value) {
    return std::isfinite(value) && value > 0 && value <= kMaxGain;
}

/** Zero or more, and finite. */
bool isAmount(float value) {
    return std::isfinite(value) && value >= 0;
}

bool areLevelsSound(FactsRecord const& record) {
    if (record.levelBits < kMinLevelBits || record.levelBits > kMaxLevelBits) {
        return false;
    }
    float const top = static_cast<float>((1 << record.levelBits) - 1);
    return std::isfinite(record.whiteLevel) && record.whiteLevel <= top &&
           std::all_of(std::begin(record.blackLevel), std::end(record.blackLevel),
                       [&](float black) { return isAmount(black) && black < record.whiteLevel; });
}

bool isSound(FactsRecord const& record) {
    return record.bayerOrder >= static_cast<int32_t>(BayerOrder::RGGB) &&
           record.bayerOrder <= static_cast<int32_t>(BayerOrder::BGGR) && areLevelsSound(record) &&
           std::all_of(std::begin(record.wbGains), std::end(record.wbGains), isGain) &&
           std::all_of(std::begin(record.colorMatrix), std::end(record.colorMatrix),
                       [](float value) { return std::fabs(value) <= kMaxGain; }) &&
           isGain(record.exposureGain) && isAmount(record.noiseShot) &&
           isAmount(record.noiseRead) && isAmount(record.denoiseStrength) &&
           isAmount(record.sharpening);
}

int32_t readInt(uint8_t const* bytes, size_t offset) {
    int32_t value;
    memcpy(&value, bytes + offset, sizeof(value));
    return value;
}

void writeInt(uint8_t* bytes, size_t offset, int32_t value) {
    memcpy(bytes + offset, &value, sizeof(value));
}

}  // namespace

size_t encodeTuningData(TuningHeader const& header, CaptureFacts const& facts, void* buffer,
                        size_t size) {
    if (size < kTuningUsedBytes) {
        return 0;
    }
    FactsRecord record;
    record.magic = kMagic;
    record.version = kVersion;
    record.bayerOrder = static_cast<int32_t>(facts.bayerOrder);
    record.levelBits = facts.levelBits;
    std::copy(std::begin(facts.blackLevel), std::end(facts.blackLevel), record.blackLevel);
    record.whiteLevel = facts.whiteLevel;
    std::copy(std::begin(facts.wbGains), std::end(facts.wbGains), record.wbGains);
    std::copy(std::begin(facts.colorMatrix), std::end(facts.colorMatrix), record.colorMatrix);
    record.exposureGain = facts.exposureGain;
    record.noiseShot = facts.noiseShot;
    record.noiseRead = facts.noiseRead;
    record.denoiseStrength = facts.denoiseStrength;
    record.sharpening = facts.sharpening;

    auto* const bytes = static_cast<uint8_t*>(buffer);
    memset(bytes, 0, kFactsOffset);
    writeInt(bytes, kRequestNoOffset, header.requestNo);
    writeInt(bytes, kFrameNumberOffset, header.frameNumber);
    writeInt(bytes, kUsedBytesOffset, static_cast<int32_t>(kTuningUsedBytes));
    memcpy(bytes + kFactsOffset, &record, sizeof(record));
    return kTuningUsedBytes;
}

TuningHeader decodeTuningHeader(void const* buffer, size_t size) {
    TuningHeader header;
    if (size < kHeaderBytes) {
        return header;
    }
    auto const* const bytes = static_cast<uint8_t const*>(buffer);
    header.requestNo = readInt(bytes, kRequestNoOffset);
    header.frameNumber = readInt(bytes, kFrameNumberOffset);
    header.totalUsedBytes = readInt(bytes, kUsedBytesOffset);
    return header;
}

FactsState decodeCaptureFacts(void const* buffer, size_t size, CaptureFacts& facts) {
    if (size < kTuningUsedBytes) {
        return FactsState::Absent;
    }
    FactsRecord record;
    memcpy(&record, static_cast<uint8_t const*>(buffer) + kFactsOffset, sizeof(record));
    if (record.magic != kMagic) {
        return FactsState::Absent;
    }
    if (record.version != kVersion || !isSound(record)) {
        return FactsState::Malformed;
    }
    facts.bayerOrder = static_cast<BayerOrder>(record.bayerOrder);
    facts.levelBits = record.levelBits;
    std::copy(std::begin(record.blackLevel), std::end(record.blackLevel), facts.blackLevel);
    facts.whiteLevel = record.whiteLevel;
    std::copy(std::begin(record.wbGains), std::end(record.wbGains), facts.wbGains);
    std::copy(std::begin(record.colorMatrix), std::end(record.colorMatrix), facts.colorMatrix);
    facts.exposureGain = record.exposureGain;
    facts.noiseShot = record.noiseShot;
    facts.noiseRead = record.noiseRead;
    facts.denoiseStrength = record.denoiseStrength;
    facts.sharpening = record.sharpening;
    return FactsState::Present;
}

}  // namespace quen::host::isp
