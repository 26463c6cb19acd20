// Where the pictures go, and the line that reports each.
#pragma once

#include <string>

#include "Animation.h"
#include "Job.h"
#include "Picture.h"

namespace reslice {

class OutputFolder {
public:
    /// Creates the folder if it does not exist; throws Failure if it cannot.
    explicit OutputFolder(std::string path);

    /// Writes the picture under the job's name and prints its size, the time that it took since
    /// the job began, and what it shows.
    void write(Job& job, const Picture& picture, const std::string& shows) const;

    /// The same for a moving picture.
    void write(Job& job, Animation& animation, const std::string& shows) const;

private:
    std::string pathOf(const Job& job) const;
    void tell(Job& job, unsigned int width, unsigned int height, const std::string& shows) const;

    std::string path_;
};

/// Prints a line on the standard output; throws Failure if that fails.
void say(const std::string& line);

}  // namespace reslice
