#include "quenOfflineDevice/request/RowCopy.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quen {
namespace {

struct InOrder {
    static void copy(uint8_t const* source, uint8_t* target, size_t bytes) {
        memcpy(target, source, bytes);
    }
#if defined(__SSE2__)
    static __m128i order(__m128i bytes) {
        return bytes;
    }
#endif
};

struct Swapped {
    static void copy(uint8_t const* source, uint8_t* target, size_t bytes) {
        for (size_t i = 0; i + 1 < bytes; i += 2) {
            target[i] = source[i + 1];
            target[i + 1] = source[i];
        }
    }
#if defined(__SSE2__)
    static __m128i order(__m128i bytes) {
        return _mm_or_si128(_mm_slli_epi16(bytes, 8), _mm_srli_epi16(bytes, 8));
    }
#endif
};

#if defined(__SSE2__)

// An x86 core reads a cache line before it writes it unless the store is non-temporal; an Arm core
// detects that whole lines are written. Interleaving several rows keeps more memory channels busy.
constexpr size_t kStreamedBytes = 16 << 20;
constexpr size_t kRowsInTurn = 8;
constexpr size_t kLineBytes = 64;

template <typename Bytes>
void streamLine(uint8_t const* source, uint8_t* target) {
    for (size_t i = 0; i < kLineBytes; i += sizeof(__m128i)) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(source + i));
        _mm_stream_si128(reinterpret_cast<__m128i*>(target + i), Bytes::order(bytes));
    }
}

/** Copies kRowsInTurn rows, a cache line of each in turn. */
template <typename Bytes>
void streamRows(uint8_t const* source, size_t rowBytes, uint8_t* target, size_t stride,
                size_t endBytes) {
    size_t const inLines = rowBytes / kLineBytes * kLineBytes;
    for (size_t i = 0; i < inLines; i += kLineBytes) {
        for (size_t row = 0; row < kRowsInTurn; ++row) {
            streamLine<Bytes>(source + row * rowBytes + i, target + row * stride + i);
        }
    }
    for (size_t row = 0; row < kRowsInTurn; ++row) {
        uint8_t* const rest = target + row * stride + inLines;
        Bytes::copy(source + row * rowBytes + inLines, rest, rowBytes - inLines);
        memset(rest + rowBytes - inLines, 0, endBytes);
    }
}

/** Copies the first rows with non-temporal stores. Returns how many; 0 where that does not apply.
 */
template <typename Bytes>
size_t copyStreamed(uint8_t const* source, size_t rowBytes, Rows const& target, size_t endBytes) {
    bool const isAligned =
            (reinterpret_cast<uintptr_t>(target.first) | target.stride) % sizeof(__m128i) == 0;
    bool const overlap = rowBytes + endBytes > target.stride;
    if (!isAligned || overlap || rowBytes * target.count < kStreamedBytes) {
        return 0;
    }
    size_t const inTurns = target.count / kRowsInTurn * kRowsInTurn;
    for (size_t row = 0; row < inTurns; row += kRowsInTurn) {
        streamRows<Bytes>(source + row * rowBytes, rowBytes, target.first + row * target.stride,
                          target.stride, endBytes);
    }
    _mm_sfence();
    return inTurns;
}

#else

template <typename Bytes>
size_t copyStreamed(uint8_t const*, size_t, Rows const&, size_t) {
    return 0;
}

#endif

template <typename Bytes>
void copyAll(uint8_t const* source, size_t rowBytes, Rows const& target, size_t endBytes) {
    for (size_t row = copyStreamed<Bytes>(source, rowBytes, target, endBytes); row < target.count;
         ++row) {
        uint8_t* const begin = target.first + row * target.stride;
        Bytes::copy(source + row * rowBytes, begin, rowBytes);
        memset(begin + rowBytes, 0, endBytes);
    }
}

}  // namespace

void copyRows(uint8_t const* source, size_t rowBytes, Rows const& target, size_t endBytes) {
    copyAll<InOrder>(source, rowBytes, target, endBytes);
}

void copySwappedRows(uint8_t const* source, size_t rowPairs, Rows const& target, size_t endBytes) {
    copyAll<Swapped>(source, 2 * rowPairs, target, endBytes);
}

}  // namespace quen
