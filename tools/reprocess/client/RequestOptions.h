#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quen::reprocess {

/** The contents of the requests. */
struct RequestOptions {
    bool raw16 = false;  ///< RAW16 buffers whatever the depth of the samples
    int64_t mode = 0;
    int32_t uiMode = 0;
    int32_t scene = 0;
    int quality = 95;
    int timeoutSeconds = 30;
    std::vector<std::string> assignments;  ///< TAG=VALUE
};

}  // namespace quen::reprocess
