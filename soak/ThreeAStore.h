#pragma once

#include "Plan.h"
#include "host/threea/ThreeAStore.h"

namespace quensoak {

/** One 3A buffer for every request, or none, as the plan of the next request says. */
class PlannedThreeAStore final : public quen::host::IThreeAStore {
  public:
    PlannedThreeAStore();
    ~PlannedThreeAStore() override;
    PlannedThreeAStore(PlannedThreeAStore const&) = delete;
    PlannedThreeAStore& operator=(PlannedThreeAStore const&) = delete;

    /** The client's thread, on which the library asks. */
    void set(ThreeA answer) { mAnswer = answer; }

    int get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) override;
    int getTuningData(int* fd, unsigned int bufferIndex) override;

  private:
    int const mDescriptor;
    ThreeA mAnswer = ThreeA::Given;
};

}  // namespace quensoak
