#include "Fold.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "Subsamples.h"
#include "Votes.h"

namespace volux::resample::detail {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Their sum, divided by their number. Rounding leaves no mean beyond its sub-samples.
class Mean : public Fold {
public:
    Mean(const Subsamples& subsamples, std::size_t voxels)
        : along_(subsamples.x), count_(static_cast<double>(countOf(subsamples))), voxels_(voxels)
    {
    }

    void begin(std::size_t voxels, const double*) override
    {
        means_.resize(voxels);
        std::fill_n(voxels_.begin(), voxels, Voxel());
    }

    void take(std::size_t first, const double* readings, std::size_t count) override
    {
        Voxel* voxel = voxels_.data() + first / along_;
        std::size_t left = along_ - first % along_;
        for (const double* const end = readings + count; readings != end; ++voxel) {
            left = std::min(left, static_cast<std::size_t>(end - readings));
            voxel->add(readings, left);
            readings += left;
            left = along_;
        }
    }

    const double* finish() override
    {
        for (std::size_t n = 0; n < means_.size(); ++n) {
            means_[n] = voxels_[n].mean(count_);
        }
        return means_.data();
    }

private:
    struct Voxel {
        double sum = -0.0;  // to which the first is added without a change, whatever its sign
        double least = kInfinity;
        double greatest = -kInfinity;

        void add(const double* readings, std::size_t count)
        {
            for (std::size_t n = 0; n < count; ++n) {
                sum += readings[n];
                least = readings[n] < least ? readings[n] : least;
                greatest = readings[n] > greatest ? readings[n] : greatest;
            }
        }
        double mean(double count) const
        {
            const double mean = sum / count;  // no comparison takes NaN for a number
            return mean < least ? least : mean > greatest ? greatest : mean;
        }
    };

    std::size_t along_;
    double count_;
    std::vector<Voxel> voxels_;
    std::vector<double> means_;
};

}  // namespace

std::unique_ptr<Fold> foldOf(const Task& task, std::size_t voxels)
{
    if (countOf(task.subsamples) == 1) {
        return nullptr;
    }
    if (task.source.reading.isLabels) {
        return std::make_unique<Votes>(task.subsamples, voxels);
    }
    return std::make_unique<Mean>(task.subsamples, voxels);
}

}  // namespace volux::resample::detail
