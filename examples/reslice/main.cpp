// Reslices volumes of heads into pictures: the library at work on real data.

#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "BrainPictures.h"
#include "BulkPictures.h"
#include "CommandLine.h"
#include "Failure.h"
#include "Interrupt.h"
#include "Inv3File.h"
#include "NiftiFile.h"
#include "OutputFolder.h"
#include "Phantom.h"
#include "SkullPictures.h"

namespace {

using namespace reslice;

std::unique_ptr<Volume> obtain(const Request& request)
{
    if (request.synthetic)
        return makePhantom(request.ct ? Modality::CT : Modality::MR);
    return request.ct ? readInv3(request.file) : readNifti(request.file);
}

void drawPictures(const Request& request)
{
    const std::unique_ptr<Volume> volume = obtain(request);
    const OutputFolder folder(request.output);
    if (request.labels)
        makeLabelPictures(*volume, folder);
    else if (request.ct)
        makeSkullPictures(*volume, folder);
    else
        makeBrainPictures(*volume, folder);
}

void carryOut(const Request& request)
{
    try {
        drawPictures(request);
    } catch (const std::bad_alloc&) {
        const std::string whose =
            request.synthetic ? "the synthetic head" : "'" + request.file + "'";
        throw Failure("there is not enough memory for " + whose);
    }
}

int report(const char* sentence, int status)
{
    std::fprintf(stderr, "reslice: %s.\n", sentence);
    return status;
}

int run(int count, char** arguments)
{
    const Request request = parseCommandLine(count, arguments);
    if (request.help)
        return std::fputs(kUsage, stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
    watchForInterrupts();
    carryOut(request);
    return 0;
}

}  // namespace

int main(int count, char** arguments)
{
    try {
        return run(count, arguments);
    } catch (const Misuse& misuse) {
        const int status = report(misuse.what(), 2);
        std::fputs(kUsage, stderr);
        return status;
    } catch (const std::bad_alloc&) {
        return report("there is not enough memory", 1);
    } catch (const std::exception& failure) {
        return report(failure.what(), 1);
    }
}
