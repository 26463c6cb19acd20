#include "OutputFolder.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "Failure.h"
#include "PngFile.h"
#include "WholeFile.h"

namespace reslice {

OutputFolder::OutputFolder(std::string path) : path_(std::move(path))
{
    std::error_code error;
    std::filesystem::create_directories(path_, error);
    std::error_code unknown;
    if (!std::filesystem::is_directory(path_, unknown))
        cannotWrite(path_, error ? reasonOf(error.value()) : "it is not a folder");
}

std::string OutputFolder::pathOf(const Job& job) const
{
    return std::filesystem::path(path_) / job.name();
}

void OutputFolder::write(Job& job, const Picture& picture, const std::string& shows) const
{
    writeWhole(encodePng(picture, pathOf(job)), pathOf(job));
    tell(job, picture.width(), picture.height(), shows);
}

void OutputFolder::write(Job& job, Animation& animation, const std::string& shows) const
{
    writeWhole(animation.finish(), pathOf(job));
    tell(job, animation.width(), animation.height(),
         std::to_string(animation.frames()) + " frames: " + shows);
}

void OutputFolder::tell(Job& job, unsigned int width, unsigned int height,
                        const std::string& shows) const
{
    job.hideBar();
    const std::string file = pathOf(job);
    const std::string folder = file.substr(0, file.size() - job.name().size());
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    std::array<char, 64> columns{};
    std::snprintf(columns.data(), columns.size(), "%-20s %11s  %5.2f s  ", job.name().c_str(),
                  size.c_str(), job.seconds());
    say(folder + columns.data() + shows);
}

void say(const std::string& line)
{
    if (std::printf("%s\n", line.c_str()) < 0 || std::fflush(stdout) != 0)
        cannotWrite("standard output", reasonOf(errno));
}

}  // namespace reslice
