#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "host/threea/ThreeAStore.h"

namespace quentest {

/** A 3A store that answers what a test sets; installed while it lives in a Guard. */
class ScriptedThreeA : public quen::host::IThreeAStore {
  public:
    class Guard {
      public:
        explicit Guard(std::shared_ptr<ScriptedThreeA> const& store)
            : mOld(quen::host::setThreeAStore(store)) {}
        ~Guard() { quen::host::setThreeAStore(std::move(mOld)); }
        Guard(Guard const&) = delete;
        Guard& operator=(Guard const&) = delete;

      private:
        std::shared_ptr<quen::host::IThreeAStore> mOld;
    };

    int get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) override {
        sizesAsked.push_back(size);
        *info = next.value_or(*info);
        return 0;
    }
    int getTuningData(int* fd, unsigned int /*bufferIndex*/) override {
        if (tuningFd >= 0) {
            *fd = tuningFd;
        }
        return 0;
    }

    std::optional<QIF3ABufferInfo> next;  // without one the record is left alone
    int tuningFd = -1;                    // -1: no tuning data
    std::vector<unsigned int> sizesAsked;
};

}  // namespace quentest
