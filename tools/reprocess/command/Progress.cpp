#include "command/Progress.h"

#include <unistd.h>

#include "terminal/Printable.h"

namespace quen::reprocess {
namespace {

constexpr size_t kBarWidth = 30;
constexpr size_t kNameWidth = 36;

/** Keeps the end of a long name, which says more than its start. */
std::string shortened(std::string const& name) {
    return name.size() <= kNameWidth ? name : "..." + name.substr(name.size() - kNameWidth + 3);
}

}  // namespace

Progress::Progress(size_t total, std::FILE* lines)
    : mTotal(total), mLines(lines), mShown(total > 1 && ::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    erase();
}

void Progress::begin(std::string const& name) {
    mName = name;
    draw();
}

void Progress::line(std::string const& text) {
    print(printable(text));
}

void Progress::lines(std::string const& text) {
    print(printableLines(text));
}

void Progress::problem(std::string const& text) {
    erase();
    std::fprintf(stderr, "%s\n", printable(text).c_str());
    draw();
}

void Progress::end() {
    ++mDone;
    draw();
}

void Progress::print(std::string const& text) {
    erase();
    std::fprintf(mLines, "%s\n", text.c_str());
    std::fflush(mLines);
    draw();
}

void Progress::erase() {
    if (mShown) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::draw() {
    if (!mShown || mDone == mTotal) {
        return;
    }
    size_t const filled = mDone * kBarWidth / mTotal;
    std::string const bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    std::fprintf(stderr, "\r\033[K[%s] %zu/%zu %s", bar.c_str(), mDone, mTotal,
                 printable(shortened(mName)).c_str());
}

}  // namespace quen::reprocess
