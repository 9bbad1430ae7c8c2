#pragma once

#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "Ledger.h"

namespace quensoak {

namespace postproc = vendor::quen::hardware::camera::quenpostproc::V1_0;

/**
 * The callback of one request: enters in its account what it is told. Called on threads of the ISP;
 * ends when the library lets go of it, and with it its hold on the account.
 */
class Listener final : public postproc::IQuenPostProcCallback {
  public:
    explicit Listener(AccountRef account) : mAccount(std::move(account)) {}

    android::hardware::Return<void> notifyResultMetadata(
            uint32_t requestNumber, android::hardware::hidl_vec<uint8_t> const& metadata,
            postproc::Status status) override;
    android::hardware::Return<void> notifyRequestResult(uint32_t requestNumber,
                                                        postproc::Status status) override;

  private:
    void check(uint32_t requestNumber, postproc::Status status);
    android::hardware::Return<void> reply() const;

    AccountRef const mAccount;
};

}  // namespace quensoak
