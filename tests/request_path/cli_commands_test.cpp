// quen-reprocess and quen-replay as a shell runs them: each command of a transcript in
// request_path/commands, what it prints, its exit code and the files that it leaves.
//
// "$ " begins a command, "@ NAME WORDS" makes an input, "? " a command without whose success the
// rest of the paragraph is left. Below a command, "| " is what it prints, "! " what it prints as
// errors, "= " its exit code unless that is 0, "+ " and "- " the files that it leaves or takes
// away. A number behind '~' may differ by two of its last place.
//
// QUEN_WRITE_COMMANDS=1 in the environment writes the transcripts anew.

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/FileText.h"
#include "support/Generators.h"

namespace {

using namespace quentest;

bool begins(std::string const& text, std::string const& start) {
    return text.rfind(start, 0) == 0;
}

std::vector<std::string> linesOf(std::string const& text) {
    std::vector<std::string> lines;
    std::istringstream from(text);
    for (std::string line; std::getline(from, line);) {
        lines.push_back(line);
    }
    return lines;
}

// What is printed, without times and what depends on the machine's arithmetic.
std::string steady(std::string text) {
    static std::pair<std::regex, char const*> const changes[] = {
            {std::regex(R"(  \d+\.\d\d s\b)"), "  TIME"},
            {std::regex(R"(, \d+\.\d\d s\b)"), ", TIME"},
            {std::regex(R"( +\d+\.\d\d ms)"), " TIME"},
            {std::regex(R"re(("duration_m?s"):[-+.e\d]+)re"), "$1:TIME"},
            {std::regex(R"((\.(jpg|jpeg|jpe|png|tif|tiff)  \d+x\d+  )(\d))"), "$1~$3"},
            {std::regex(R"re((\.(?:jpg|png|tif)"[^{]*"output_bytes":)\d+)re"), "$1SIZE"},
            {std::regex(
                     R"re(,(\{|"(?:configurations|requests|results|client_results|legs|metadata|settings)"))re"),
             ",\n$1"},
            {std::regex(R"((^|\n)\d\d:\d\d:\d\d\.\d+ +\d+ )"), "$1CLOCK "},
            {std::regex(R"((PSNR|R|G|B) (\d+\.\d)\d)"), "$1 ~$2"},
            {std::regex(R"re("(all|red|green|blue)":(\d+\.\d)\d*)re"), "$1 ~$2"},
            {std::regex(R"(\r)"), "<CR>"},
            {std::regex("\x1b"), "<ESC>"},
    };
    for (auto const& [pattern, by] : changes) {
        text = std::regex_replace(text, pattern, by);
    }
    return text;
}

#ifdef __x86_64__
constexpr double kTenths = 2.1;
#else
constexpr double kTenths = 12.1;
#endif

// Whether lines are the same but for numbers that may differ a little.
bool isLike(std::string const& expected, std::string const& actual) {
    static std::regex const number(R"(~?-?\d+(\.\d+)?(e-?\d+)?)");
    if (expected == actual) {
        return true;
    }
    std::sregex_iterator a(expected.begin(), expected.end(), number);
    std::sregex_iterator b(actual.begin(), actual.end(), number);
    std::sregex_iterator const end;
    std::string restA = expected, restB = actual;
    for (; a != end && b != end; ++a, ++b) {
        bool const isAbout = a->str()[0] == '~' && b->str()[0] == '~';
        double const x = std::stod(a->str().substr(isAbout ? 1 : 0));
        double const y = std::stod(b->str().substr(isAbout ? 1 : 0));
        double const place = std::pow(0.1, std::max<ptrdiff_t>(a->length(1) - 1, 0));
        // Long decimals are calculated ones.
        double const allowed = isAbout            ? (place < 1 ? kTenths : 2.1) * place
                               : a->length(1) > 5 ? 1e-4 * std::abs(x)
                                                  : 0;
        if (a->prefix() != b->prefix() || std::abs(x - y) > allowed) {
            return false;
        }
        restA = a->suffix();
        restB = b->suffix();
    }
    return a == end && b == end && restA == restB;
}

std::vector<std::string> transcripts() {
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(QUEN_COMMANDS)) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

class CliCommandsTest : public CliTest, public testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        fs::create_directory(path("here"));
        fs::create_directory(path("bin"));
        for (auto const& [name, words] : {std::pair("quen-reprocess", QUEN_REPROCESS),
                                          {"quen-replay", QUEN_REPLAY},
                                          {"quen-make-recordings", QUEN_MAKE_RECORDINGS}}) {
            put(std::string("bin/") + name,
                std::string("#!/bin/sh\nexec ${STUMBLES:+env LD_PRELOAD=$STUMBLE} ") + words +
                        " \"$@\"\n");
            fs::permissions(path(std::string("bin/") + name), fs::perms(0755));
        }
        ::setenv("RECORDINGS", QUEN_RECORDINGS, 1);
        ::setenv("STUMBLE", QUEN_STUMBLE, 1);
        ::setenv("TZ", "CET-1", 1);
        ::setenv("LC_ALL", "C.UTF-8", 1);
    }

    // Follows the commands of a transcript. @return it, with what they do now
    std::vector<std::string> play(std::vector<std::string> const& lines) {
        bool isLeft = false;
        std::vector<std::string> now;
        for (size_t i = 0; i < lines.size(); ++i) {
            std::string const& line = lines[i];
            bool const isTold = !line.empty() && std::string("|!=+-").find(line[0]) < 5;
            isLeft = isLeft && !line.empty();
            if (isTold && !isLeft) {
                continue;
            }
            now.push_back(line);
            if (isLeft || line.size() < 2) {
                continue;
            }
            std::string words = line.substr(2);
            while (words.back() == '\\') {
                now.push_back(lines[++i]);
                words = words.substr(0, words.size() - 1) + lines[i];
            }
            if (line[0] == '?') {
                isLeft = command(words) != 0;
            } else if (line[0] == '@') {
                size_t const blank = words.find(' ');
                put("here/" + words.substr(0, blank), generated(words.substr(blank + 1)));
                mFiles = files();
            } else if (line[0] == '$') {
                int const code = command(words);
                add(now, "|", steady(get("out.txt")));
                add(now, "!", steady(get("err.txt")));
                if (code != 0) {
                    now.push_back("= " + std::to_string(code));
                }
                addChanges(now);
            }
        }
        return now;
    }

  private:
    using Files = std::map<std::string, std::string>;

    // Runs a shell's words. @return the exit code
    int command(std::string const& words) const {
        put("step.sh",
            "umask 022\nPATH=" + path("bin") + ":$PATH\n. " QUEN_COMMANDS "/prelude.sh\n" + words);
        return shell("cd here && sh ../step.sh >../out.txt 2>../err.txt </dev/null");
    }

    static void add(std::vector<std::string>& to, std::string const& mark,
                    std::string const& text) {
        for (std::string const& line : linesOf(text)) {
            to.push_back(line.empty() ? mark : mark + " " + line);
        }
    }

    // All that is in the folder: first what it is, then a file's content.
    Files files() const {
        Files found;
        for (auto const& entry : fs::recursive_directory_iterator(path("here"))) {
            std::string const name = entry.path().lexically_relative(path("here")).string();
            auto const mode = static_cast<unsigned>(entry.symlink_status().permissions());
            if (entry.is_symlink()) {
                std::string const to = fs::read_symlink(entry.path()).string();
                found[name] = "-> " + (to[0] == '/' ? "its place" : to) + "\n";
            } else if (entry.is_directory()) {
                found[name + "/"] = "\n";
            } else if (!entry.is_regular_file()) {
                found[name] = "no file\n";
            } else {
                found[name] =
                        (mode == 0644 ? "" : formatted("%04o", mode)) + "\n" + get("here/" + name);
            }
        }
        return found;
    }

    void addChanges(std::vector<std::string>& to) {
        Files const now = files();
        for (auto const& entry : now) {
            std::string const& name = entry.first;
            std::string const& state = entry.second;
            auto const before = mFiles.find(name);
            if (before != mFiles.end() && before->second == state) {
                continue;
            }
            size_t const end = state.find('\n');
            bool const isFile = fs::is_regular_file(path("here/" + name)) && state[0] != '-';
            auto const same = std::find_if(mFiles.begin(), mFiles.end(), [&](auto const& file) {
                auto const found = now.find(file.first);
                return end + 1 < state.size() && file.second == state && found != now.end() &&
                       found->second == state;
            });
            std::string text = name + " " + state.substr(0, end) + (end > 0 ? " " : "");
            if (same != mFiles.end()) {
                text += "as " + same->first;
            } else if (isFile) {
                text += fileText(path("here/" + name), state.substr(end + 1));
            }
            std::vector<std::string> const lines = linesOf(text);
            for (size_t i = 0; i < lines.size(); ++i) {
                size_t const last = lines[i].find_last_not_of(' ');
                to.push_back((i == 0 ? "+ " : "+   ") + lines[i].substr(0, last + 1));
            }
        }
        for (auto const& file : mFiles) {
            if (now.count(file.first) == 0) {
                to.push_back("- " + file.first);
            }
        }
        mFiles = now;
    }

    Files mFiles;
};

}  // namespace

TEST_P(CliCommandsTest, DoWhatTheirTranscriptSays) {
    std::string const name = std::string(QUEN_COMMANDS "/") + GetParam() + ".txt";
    std::vector<std::string> const expected = linesOf(get(name));
    ASSERT_FALSE(expected.empty());
    std::vector<std::string> const now = play(expected);
    if (std::getenv("QUEN_WRITE_COMMANDS") != nullptr) {
        std::ofstream file(name);
        for (std::string const& line : now) {
            file << line << "\n";
        }
        return;
    }
    std::string latest;
    int told = 0;
    for (size_t i = 0; i < std::max(expected.size(), now.size()) && told < 3; ++i) {
        std::string const was = i < expected.size() ? expected[i] : "(its end)";
        std::string const is = i < now.size() ? now[i] : "(its end)";
        latest = begins(was, "$ ") ? was : latest;
        if (!isLike(was, is)) {
            ADD_FAILURE() << GetParam() << ".txt:" << i + 1 << ", " << latest << "\n  expected "
                          << was << "\n  now      " << is;
            ++told;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Cli, CliCommandsTest, testing::ValuesIn(transcripts()),
                         [](auto const& one) { return one.param; });
