// Chooses the kernel and the border by name at run time.
// Usage: run_time_policies [nearest|linear|cubic [constant|replication]]

#include <cstdio>
#include <map>
#include <string>

#include "volux/core.h"

using namespace volux::core;

namespace {

const std::map<std::string, Interpolator*> kKernels = {
    {"nearest", &InterpolationType::NEAREST_NEIGHBOR},
    {"linear", &InterpolationType::LINEAR},
    {"cubic", &InterpolationType::CUBIC}};

const std::map<std::string, Border*> kBorders = {
    {"constant", &InterpolationBorderType::CONSTANT},
    {"replication", &InterpolationBorderType::REPLICATION}};

/// Half a voxel beyond the last one: half inside, half the border's.
int read(const VxImage<unsigned short>& image, Interpolator* kernel, Border* border)
{
    return image.getValueVoxel(3.5, 0.0, 0.0, 0, kernel, border, 1000);
}

bool sameWhenCompiled(const VxImage<unsigned short>& image)
{
    const auto linear = image.getValueVoxel(3.5, 0.0, 0.0, 0, InterpolationType::LINEAR,
                                            InterpolationBorderType::CONSTANT, 1000);
    return linear == read(image, kKernels.at("linear"), kBorders.at("constant")) && linear == 700;
}

}  // namespace

int main(int count, char** arguments)
{
    const auto kernel = kKernels.find(count > 1 ? arguments[1] : "linear");
    const auto border = kBorders.find(count > 2 ? arguments[2] : "constant");
    if (kernel == kKernels.end() || border == kBorders.end()) {
        std::fputs("There is no such kernel or border.\n", stderr);
        return 2;
    }

    VxImage<unsigned short> image;
    if (image.initialize(4, 4, 4, 1) != SUCCESS || image.fill(400) != SUCCESS)
        return 1;
    std::printf("%s, %s: %d\n", kernel->first.c_str(), border->first.c_str(),
                read(image, kernel->second, border->second));

    bool right = sameWhenCompiled(image);
    for (const auto& [name, any] : kKernels)  // a flat image with its edge replicated stays flat
        right = right && read(image, any, kBorders.at("replication")) == 400;
    return right ? 0 : 1;
}
