#include "host/gralloc/BufferSettings.h"

#include <unistd.h>

namespace quen::host {

namespace {

constexpr uint64_t kAlignment = 64;

uint64_t settingsOffset(BufferFacts const& facts) {
    return (facts.extent.sizeInBytes + kAlignment - 1) / kAlignment * kAlignment;
}

}  // namespace

uint64_t reservedOffset(BufferFacts const& facts) {
    return settingsOffset(facts) + sizeof(BufferSettings);
}

uint64_t wholeSize(BufferFacts const& facts) {
    return reservedOffset(facts) + facts.reservedSize;
}

BufferSettings readSettings(int memory, BufferFacts const& facts) {
    BufferSettings settings{};
    auto const offset = static_cast<off_t>(settingsOffset(facts));
    ssize_t const read = pread(memory, &settings, sizeof(settings), offset);
    return read == static_cast<ssize_t>(sizeof(settings)) ? settings : BufferSettings{};
}

bool writeSettings(int memory, BufferFacts const& facts, BufferSettings const& settings) {
    auto const offset = static_cast<off_t>(settingsOffset(facts));
    return pwrite(memory, &settings, sizeof(settings), offset) ==
           static_cast<ssize_t>(sizeof(settings));
}

}  // namespace quen::host
