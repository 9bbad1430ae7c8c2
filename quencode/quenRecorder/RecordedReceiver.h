#pragma once

#include <cstdint>
#include <memory>

#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>

#include "quenRecorder/Recorder.h"
#include "quenRecorder/SubmittedOutputs.h"

namespace quen::recorder {

/**
 * Stands for the library's receiver of results: records each result and passes it on. Who links the
 * library to the death of the ISP's module links this object instead. Any thread.
 */
class RecordedReceiver : public vendor::mediatek::hardware::camera::isphal::V1_0::ICallback,
                         public android::hardware::hidl_death_recipient {
  public:
    using ICallback = vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
    using ISPResult = vendor::mediatek::hardware::camera::isphal::V1_0::ISPResult;

    /** @param library the library's own receiver, a HalInterface::ClientCallback */
    RecordedReceiver(std::shared_ptr<Recorder> recorder, uint32_t session,
                     android::sp<ICallback> const& library,
                     std::shared_ptr<SubmittedOutputs> outputs);

    android::hardware::Return<void> processResult(ISPResult const& result) override;
    android::hardware::Return<void> processEarlyResult(ISPResult const& result) override;
    void serviceDied(uint64_t cookie,
                     android::wp<android::hidl::base::V1_0::IBase> const& who) override;

  private:
    template <typename Forward>
    android::hardware::Return<void> record(recording::Crossing& crossing, Forward const& forward);

    std::shared_ptr<Recorder> const mRecorder;
    uint32_t const mSession;
    android::sp<ICallback> const mLibrary;
    std::shared_ptr<SubmittedOutputs> const mOutputs;
};

}  // namespace quen::recorder
