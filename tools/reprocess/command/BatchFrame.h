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

namespace quen::reprocess {

/**
 * One input on its way to its output, stage by stage. The stages throw nothing: what goes wrong is
 * kept, and the stages after it do nothing. One thread at a time; for which thread see Reprocessor.
 */
class BatchFrame {
  public:
    /** @param number of the frame's requests */
    BatchFrame(Job const& job, uint32_t number) : mJob(job), mNumber(number) {}

    /** Reads the input. @return the bytes that its work takes */
    size_t read(Options const& options, Reprocessor& reprocessor);

    void submit(Reprocessor& reprocessor);
    void finish(Reprocessor& reprocessor);

    /** Writes the output and prints what became of it. @return whether all went well */
    bool write(Report& report, Progress& progress);

  private:
    template <typename Work>
    void attempt(Work const& work);
    void checkNotItself() const;
    void writeProduct() const;

    Job const mJob;
    uint32_t const mNumber;
    std::chrono::steady_clock::time_point mBegin;
    Stopwatch mWatch;
    std::unique_ptr<Frame> mFrame;  // after the reading; uses mWatch
    Product mProduct;               // after the end
    std::string mSize;              // of the picture, as text
    std::vector<std::string> mNotes;
    std::string mProblem;
};

}  // namespace quen::reprocess
