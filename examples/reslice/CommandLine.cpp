#include "CommandLine.h"

#include <vector>

#include "Failure.h"

namespace reslice {

const char* const kUsage =
    "Usage: reslice [--output DIR] FILE          pictures of a NIfTI-1 volume (.nii, .nii.gz)\n"
    "       reslice [--output DIR] --ct FILE     the skull of an InVesalius project (.inv3)\n"
    "       reslice [--output DIR] --labels FILE a label map, NIfTI-1, made smaller\n"
    "       reslice [--output DIR] --synthetic [--ct]\n"
    "                                            the same of a head computed on the spot\n"
    "       reslice --help\n"
    "Writes PNG and GIF files into DIR, which is demo-output if not given. Shows the first\n"
    "of a series of volumes; intensities are the stored values times the file's slope, plus its\n"
    "intercept, unless the slope is 0 or either of them is not finite; the patient's right is\n"
    "on the left, where the file tells its orientation.\n"
    "Exit status: 0 done, 1 a file could not be read or written, 2 wrong usage.\n";

Request parseCommandLine(int count, const char* const* arguments)
{
    Request request;
    bool options = true;
    std::vector<std::string> files;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (!options || argument.empty() || argument[0] != '-')
            files.push_back(argument);
        else if (argument == "--")
            options = false;
        else if (argument == "--help")
            request.help = true;
        else if (argument == "--ct")
            request.ct = true;
        else if (argument == "--labels")
            request.labels = true;
        else if (argument == "--synthetic")
            request.synthetic = true;
        else if (argument == "--output" && i + 1 < count)
            request.output = arguments[++i];
        else
            throw Misuse(argument == "--output" ? "--output needs a folder"
                                                : "there is no option " + argument);
    }
    if (request.labels && (request.ct || request.synthetic))
        throw Misuse("--labels takes a file alone");
    if (!request.help && files.size() != (request.synthetic ? 0U : 1U))
        throw Misuse(request.synthetic ? "--synthetic takes no file" : "give one file");
    if (!files.empty())
        request.file = files[0];
    return request;
}

}  // namespace reslice
