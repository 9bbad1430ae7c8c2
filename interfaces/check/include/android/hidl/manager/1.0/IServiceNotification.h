#pragma once

namespace android::hidl::manager::V1_0 {

struct IServiceNotification;

}  // namespace android::hidl::manager::V1_0
