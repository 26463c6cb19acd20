// Brings a whole volume to voxels of equal edges by one call.

#include <memory>
#include <variant>

#include "BulkCall.h"
#include "EqualEdges.h"

namespace reslice {
namespace {

template <class T>
std::unique_ptr<Volume> resized(const core::VxImage<T>& source, const Volume& volume, Job& job)
{
    Layout layout = layoutOfEqualEdges(volume);
    layout.slope = volume.layout().slope;
    layout.intercept = volume.layout().intercept;
    const auto [width, height, depth] = layout.extent;
    std::shared_ptr<T[]> voxels(new T[std::size_t{width} * height * depth]);
    core::VxImage<T> result;
    result.initializeWithPointer(voxels.get(), width, height, depth, 1);
    const double edge = layout.spacing[0];
    volux::resample::Options options = bulkOptions(core::Cubic(), 0.0, job);
    options.border = &core::InterpolationBorderType::REPLICATION;
    requireDone(volux::resample::resize(source, core::VoxelSize(edge, edge, edge),
                                        volux::resample::Align::EDGES, &result, options),
                volume, job);
    return makeVolume<T>(layout, voxels);
}

}  // namespace

std::unique_ptr<Volume> makeIsotropic(const Volume& volume, Job& job)
{
    return std::visit([&](auto* source) { return resized(*source, volume, job); }, volume.image());
}

}  // namespace reslice
