// Where the pictures go, and the line that tells of each.
#pragma once

#include <string>

#include "Job.h"
#include "Picture.h"

namespace reslice {

class OutputFolder {
public:
    /// Makes the folder if it is not there; throws Failure if that cannot be done.
    explicit OutputFolder(std::string path);

    /// Writes the picture under the job's name and prints its size, the time that it took since
    /// the job began, and what it shows.
    void write(Job& job, const Picture& picture, const std::string& shows) const;

private:
    std::string path_;
};

}  // namespace reslice
