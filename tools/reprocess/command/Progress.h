#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace quen::reprocess {

/**
 * Prints the progress of a batch: a line per file on standard output, unless that takes something
 * else, problems on standard error, and a progress bar below them when standard error is a terminal
 * and there are several files.
 */
class Progress {
  public:
    /** @param lines where the lines about files go */
    Progress(size_t total, std::FILE* lines);

    /** Erases the bar. */
    ~Progress();

    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    /** Starts a file. */
    void begin(std::string const& name);

    /** Prints a line about a file. */
    void line(std::string const& text);

    /** Prints several lines about a file, with an empty one after them. */
    void lines(std::string const& text);

    /** Prints a line to standard error. */
    void problem(std::string const& text);

    /** Ends the current file, whether it succeeded or not. */
    void end();

  private:
    void print(std::string const& text);
    void erase();
    void draw();

    size_t const mTotal;
    std::FILE* const mLines;
    bool const mShown;
    size_t mDone = 0;
    std::string mName;
};

}  // namespace quen::reprocess
