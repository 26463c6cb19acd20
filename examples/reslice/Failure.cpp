#include "Failure.h"

#include <cctype>
#include <system_error>

namespace reslice {

std::string reasonOf(int errorNumber)
{
    std::string words = std::generic_category().message(errorNumber);
    if (!words.empty())
        words[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(words[0])));
    return words;
}

void cannotRead(const std::string& file, const std::string& reason)
{
    throw Failure("cannot read '" + file + "': " + reason);
}

void cannotWrite(const std::string& file, const std::string& reason)
{
    throw Failure("cannot write '" + file + "': " + reason);
}

}  // namespace reslice
