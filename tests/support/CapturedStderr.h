// Takes what is written to std::cerr while the object lives, instead of the real stream.
#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace volux::test {

class CapturedStderr {
public:
    CapturedStderr() : previous_(std::cerr.rdbuf(captured_.rdbuf())) {}
    ~CapturedStderr() { std::cerr.rdbuf(previous_); }
    CapturedStderr(const CapturedStderr&) = delete;
    CapturedStderr& operator=(const CapturedStderr&) = delete;

    std::string text() const { return captured_.str(); }

    /// Without their line ends; an unfinished last line counts as one.
    std::vector<std::string> lines() const
    {
        std::istringstream written(captured_.str());
        std::vector<std::string> result;
        for (std::string line; std::getline(written, line);)
            result.push_back(line);
        return result;
    }

private:
    std::ostringstream captured_;
    std::streambuf* previous_;
};

}  // namespace volux::test
