#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "client/Reprocessor.h"
#include "command/FileNames.h"
#include "command/Options.h"
#include "command/Progress.h"
#include "report/InfoDocument.h"

namespace quen::reprocess {

/**
 * One input on its way to its output, stage by stage. The stages throw nothing: what goes wrong is
 * kept, and the stages after it do nothing. One thread at a time; for which thread see Reprocessor.
 */
class BatchFrame {
  public:
    /**
     * @param number of the frame's requests
     * @param trace the timeline; null for none
     */
    BatchFrame(Job const& job, uint32_t number, Trace* trace);

    /** Reads the input. @return the bytes that its work takes */
    size_t read(Options const& options, Reprocessor& reprocessor);

    void submit(Reprocessor& reprocessor);
    void finish(Reprocessor& reprocessor);

    enum class End { Done, Skipped, Failed };

    /** Writes the output and prints what became of it. @param document of --info=json, or null */
    End write(Report& report, Progress& progress, InfoDocument* document);

  private:
    template <typename Work>
    void attempt(Work const& work);
    void checkNotItself() const;
    void makeFile();
    void writeProduct() const;
    FrameOutcome outcome() const;
    void tell(FrameOutcome const& outcome, Progress& progress) const;

    Job const mJob;
    uint32_t const mNumber;
    std::chrono::steady_clock::time_point mBegin;
    Stopwatch mWatch;
    int mDepth = 8;                 // of an RGB output
    std::unique_ptr<Frame> mFrame;  // after the reading; uses mWatch
    Product mProduct;               // after the end
    uint32_t mWidth = 0;            // as read
    uint32_t mHeight = 0;
    uint32_t mShownWidth = 0;  // as written: upright, where the output is RGB
    uint32_t mShownHeight = 0;
    std::vector<std::string> mNotes;
    std::string mProblem;
};

}  // namespace quen::reprocess
