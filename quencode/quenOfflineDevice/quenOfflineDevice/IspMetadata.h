#pragma once

#include <cstdint>

/** Type codes of the ISP metadata buffer. Float and int64 stand the other way round in IMetadata.
 */
inline constexpr uint32_t kIspTypeByte = 0;
inline constexpr uint32_t kIspTypeInt32 = 1;
inline constexpr uint32_t kIspTypeInt64 = 2;
inline constexpr uint32_t kIspTypeFloat = 3;
