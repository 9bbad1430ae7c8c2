#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quensoak {

/**
 * The ISP's answers: metadata buffers, made once. The malformed ones come after the sound ones; the
 * default build is given none of them, since it trusts what the ISP says.
 */
class Answers {
  public:
    Answers();

    size_t sound() const { return mSound; }
    size_t all() const { return mBuffers.size(); }
    std::vector<uint8_t>& operator[](size_t index) { return mBuffers[index]; }

  private:
    std::vector<std::vector<uint8_t>> mBuffers;
    size_t mSound = 0;
};

}  // namespace quensoak
