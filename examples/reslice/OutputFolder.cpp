#include "OutputFolder.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "Failure.h"
#include "PngFile.h"

namespace reslice {

OutputFolder::OutputFolder(std::string path) : path_(std::move(path))
{
    std::error_code error;
    std::filesystem::create_directories(path_, error);
    std::error_code unknown;
    if (!std::filesystem::is_directory(path_, unknown))
        cannotWrite(path_, error ? reasonOf(error.value()) : "it is not a folder");
}

void OutputFolder::write(Job& job, const Picture& picture, const std::string& shows) const
{
    const std::string file = std::filesystem::path(path_) / job.name();
    writePng(picture, file);
    job.hideBar();
    const std::string folder = file.substr(0, file.size() - job.name().size());
    const std::string size =
        std::to_string(picture.width()) + " x " + std::to_string(picture.height());
    if (std::printf("%s%-20s %11s  %5.2f s  %s\n", folder.c_str(), job.name().c_str(), size.c_str(),
                    job.seconds(), shows.c_str()) < 0 ||
        std::fflush(stdout) != 0)
        cannotWrite("standard output", reasonOf(errno));
}

}  // namespace reslice
