#include "support/Child.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace quenbench {

namespace {

/** Starts a program with its output redirected to a descriptor. @return its process, or -1 */
pid_t start(std::vector<std::string> const& command, int output) {
    std::vector<char*> arguments;
    for (std::string const& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t const child = fork();
    if (child == 0) {
        dup2(output, STDOUT_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    return child;
}

double secondsOf(timeval const& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

bool endedWell(int status) {
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

double median(std::vector<Cost> const& costs, double Cost::*figure) {
    std::vector<double> values;
    for (Cost const& cost : costs) {
        values.push_back(cost.*figure);
    }
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool runChild(std::vector<std::string> const& command, Cost& cost) {
    static int const gNowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    auto const begin = std::chrono::steady_clock::now();
    pid_t const child = start(command, gNowhere);
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        return false;
    }
    cost.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    cost.processorSeconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    cost.peakBytes = static_cast<double>(usage.ru_maxrss) * 1024;
    return endedWell(status);
}

bool readChild(std::vector<std::string> const& command, std::string& output) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    pid_t const child = start(command, ends[1]);
    close(ends[1]);
    char text[1024];
    for (ssize_t got = 0; (got = read(ends[0], text, sizeof(text))) > 0;) {
        output.append(text, static_cast<size_t>(got));
    }
    close(ends[0]);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && endedWell(status);
}

}  // namespace quenbench
