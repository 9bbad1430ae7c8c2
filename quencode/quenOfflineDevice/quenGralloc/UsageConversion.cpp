#include "quenGralloc/UsageConversion.h"

namespace {

// Gralloc 0: "often" is both bits of its mask.
constexpr uint64_t kGralloc0ReadOften = 0x3;
constexpr uint64_t kGralloc0WriteOften = 0x30;

// Gralloc 1 states "read" and "read often" (likewise for writing) as two bits.
constexpr uint64_t kGralloc1ReadOften = 0x6;
constexpr uint64_t kGralloc1WriteOften = 0x60;

// The bits that either convention uses for them.
constexpr uint64_t kReadBits = 0x7;
constexpr uint64_t kWriteBits = 0x70;

// Bits that mean the same in both conventions.
constexpr uint64_t kProducerBits = 0x00C24222;
constexpr uint64_t kConsumerBits = 0x00959902;

constexpr uint64_t kLow32Bits = 0xFFFFFFFF;

constexpr bool hasAll(uint64_t usage, uint64_t bits) {
    return (usage & bits) == bits;
}

}  // namespace

void android_convertGralloc0To1Usage(int32_t usage, uint64_t* producerUsage,
                                     uint64_t* consumerUsage) {
    uint64_t const wide = static_cast<uint64_t>(static_cast<int64_t>(usage));
    *producerUsage = wide & kProducerBits;
    *consumerUsage = wide & kConsumerBits;
    if (hasAll(wide, kGralloc0ReadOften)) {
        *producerUsage |= kGralloc1ReadOften;
        *consumerUsage |= kGralloc1ReadOften;
    }
    if (hasAll(wide, kGralloc0WriteOften)) {
        *producerUsage |= kGralloc1WriteOften;
    }
}

int32_t android_convertGralloc1To0Usage(uint64_t producerUsage, uint64_t consumerUsage) {
    uint64_t usage = producerUsage | consumerUsage;
    if (hasAll(usage, kGralloc1ReadOften)) {
        usage = (usage & ~kReadBits & kLow32Bits) | kGralloc0ReadOften;
    }
    if (hasAll(usage, kGralloc1WriteOften)) {
        usage = (usage & ~kWriteBits) | kGralloc0WriteOften;
    }
    return static_cast<int32_t>(static_cast<uint32_t>(usage));
}
