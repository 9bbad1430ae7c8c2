#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace quen::reprocess {

/** The bytes of a regular file, mapped read-only while the object lives. */
class MappedFile {
  public:
    /**
     * Opens and maps a file.
     *
     * @throws Failure when it cannot be read, is no regular file or is empty
     */
    static std::shared_ptr<MappedFile const> open(std::string const& path);

    ~MappedFile();
    MappedFile(MappedFile const&) = delete;
    MappedFile& operator=(MappedFile const&) = delete;

    uint8_t const* data() const { return mData; }
    size_t size() const { return mSize; }

  private:
    MappedFile(uint8_t const* data, size_t size) : mData(data), mSize(size) {}

    uint8_t const* mData;
    size_t mSize;
};

}  // namespace quen::reprocess
