// What the user asks for.
#pragma once

#include <string>

namespace reslice {

struct Request {
    std::string output = "demo-output";
    std::string file;
    bool synthetic = false;  ///< in place of the file
    bool ct = false;
    bool labels = false;  ///< the file is a label map
    bool help = false;
};

extern const char* const kUsage;

/// Throws Misuse for a command line that cannot be carried out.
Request parseCommandLine(int count, const char* const* arguments);

}  // namespace reslice
