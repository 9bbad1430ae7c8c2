#pragma once

#include <cstddef>
#include <string>

namespace quen::reprocess {

/**
 * What a batch tells while it runs: one line a file on standard output, problems on standard error,
 * and, when that is a terminal and there is more than one file, a bar that the lines pass above.
 */
class Progress {
  public:
    explicit Progress(size_t total);

    /** Takes the bar away. */
    ~Progress();

    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    /** A file is being worked on. */
    void begin(std::string const& name);

    /** A line for standard output. */
    void line(std::string const& text);

    /** A line for standard error. */
    void problem(std::string const& text);

    /** The file begun last is done with, well or not. */
    void end();

  private:
    void erase();
    void draw();

    size_t const mTotal;
    bool const mShown;
    size_t mDone = 0;
    std::string mName;
};

}  // namespace quen::reprocess
