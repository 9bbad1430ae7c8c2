#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quen::host {

/** One record of an ISP metadata buffer. Points into the buffer. */
struct IspRecord {
    uint32_t tag = 0;
    uint32_t type = 0;              ///< 0 unsigned 8-bit, 1 int32, 2 int64, 3 float
    uint32_t byteSize = 0;          ///< a whole number of items
    uint8_t const* data = nullptr;  ///< packed items, of no particular alignment

    /** Items of the record. */
    size_t count() const;

    /** The item at an index; nothing when the record has no such item, or is of another type. */
    std::optional<uint8_t> byteAt(size_t index) const;
    std::optional<int32_t> int32At(size_t index) const;
    std::optional<int64_t> int64At(size_t index) const;
    std::optional<float> floatAt(size_t index) const;
};

/**
 * Reads an untrusted ISP metadata buffer. Parsing finds every error in it; no access leaves the
 * buffer afterwards. Points at the buffer; copies nothing.
 */
class IspMetadataReader {
  public:
    /**
     * @param data may be null when `size` is 0: a buffer without bytes has no records
     * @return false for a malformed buffer: error() says why, and there are no records
     */
    bool parse(void const* data, size_t size);

    /** The error of the last parse, as text; empty when there was none. */
    char const* error() const { return mError; }

    /** Records of the buffer. */
    size_t count() const { return mCount; }

    /** The record at a position, 0 <= index < count(). */
    IspRecord at(size_t index) const;

    /** The last record of a tag, which is the one that counts. */
    std::optional<IspRecord> find(uint32_t tag) const;

    /** An item of a tag; nothing when the tag is not there, has fewer items or another type. */
    std::optional<uint8_t> byteOf(uint32_t tag, size_t index = 0) const;
    std::optional<int32_t> int32Of(uint32_t tag, size_t index = 0) const;
    std::optional<int64_t> int64Of(uint32_t tag, size_t index = 0) const;
    std::optional<float> floatOf(uint32_t tag, size_t index = 0) const;

  private:
    bool fail(char const* error);

    uint8_t const* mRecords = nullptr;
    size_t mCount = 0;
    char const* mError = "";
};

}  // namespace quen::host
