// Label maps, and onto which grids they are brought.
#pragma once

#include "Bulk.h"

namespace volux::bench {

/// Shells of sixteen labels, several voxels thick, as the regions of a segmentation are.
struct Regions {
    static constexpr const char* kName = "regions";
    static constexpr short kLabels = 16;
    static std::vector<short> voxels(int extent)
    {
        std::vector<double> wave;
        for (int i = 0; i < extent; ++i) {
            wave.push_back(std::sin(0.07 * i));
        }
        std::vector<short> labels;
        for (const double z : wave) {
            for (const double y : wave) {
                for (const double x : wave) {
                    labels.push_back(static_cast<short>(8.0 + 3.5 * (x * y + z)));
                }
            }
        }
        return labels;
    }
};

/// Eight labels without any order: all neighbours differ, nearly everywhere.
struct Noise {
    static constexpr const char* kName = "noise";
    static constexpr short kLabels = 8;
    static std::vector<short> voxels(int extent)
    {
        std::vector<short> labels(static_cast<std::size_t>(extent) * extent * extent);
        for (std::size_t n = 0; n < labels.size(); ++n) {
            labels[n] = static_cast<short>(scattered(n) % kLabels);
        }
        return labels;
    }
};

template <class Map, int Extent>
const Source<short>& labels()
{
    static const Source<short> made = {Extent, Map::voxels(Extent)};
    return made;
}

/// A quarter of the voxels along each axis, with sub-samples.
struct Reduced {
    static constexpr const char* kName = "reduced";
    static constexpr int kExtent = 256;
    static Grid target()
    {
        return resample::gridOfSize(core::ImageSize(kExtent, kExtent, kExtent, 1),
                                    core::VoxelSize(1, 1, 1), 64, 64, 64, resample::Align::EDGES);
    }
};

template <class Workload, class Map>
std::string labelsRow(const std::string& name)
{
    return std::string("labels/") + Workload::kName + '/' + Map::kName + '/' + name;
}

}  // namespace volux::bench
