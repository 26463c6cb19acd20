// The vote of the sub-samples of a voxel, which Labels has instead of their mean.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Fold.h"
#include "volux/resample/Subsamples.h"

namespace volux::resample::detail {

// The label of most sub-samples; among several that of the nearest voxel, else the lowest. NaN is
// one label, higher than every number. Zeros are one label, with the first one's sign.
//
// A pass over the sub-samples counts the lowest labels of each voxel, as many as there is room for,
// and the next pass those that are higher. So memory depends on nothing, and few voxels meet more
// labels than one pass counts.
class Votes : public Fold {
public:
    Votes(const Subsamples& subsamples, std::size_t voxels);

    void begin(std::size_t voxels, const double* nearest) override;
    void take(std::size_t first, const double* readings, std::size_t count) override;
    bool goesOn() override;
    const double* finish() override;

private:
    struct Count {
        double label;
        std::uint64_t votes;
    };

    struct Voxel {
        static constexpr std::size_t kRoom = 8;

        Count counts[kRoom];  // of this pass
        std::size_t used;
        double last;    // the highest label of the passes before
        bool isLater;   // there were such
        bool isPassed;  // a label must wait for the next pass
        Count winner;   // of the passes before
        Count nearest;  // the label of the nearest voxel

        void begin(double nearestLabel);
        void add(double label, std::uint64_t votes);
        void addNew(double label, std::uint64_t votes);
        bool elect();
        double elected() const;
    };

    std::size_t along_;
    std::vector<Voxel> voxels_;
    std::vector<double> labels_;
};

}  // namespace volux::resample::detail
