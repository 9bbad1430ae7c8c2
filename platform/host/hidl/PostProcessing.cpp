#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

namespace vendor::quen::hardware::camera::quenpostproc::V1_0 {

const char* IQuenPostProcCallback::descriptor(
        "vendor.quen.hardware.camera.quenpostproc@1.0::IQuenPostProcCallback");

}  // namespace vendor::quen::hardware::camera::quenpostproc::V1_0
