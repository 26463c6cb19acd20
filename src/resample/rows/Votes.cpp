#include "Votes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace volux::resample::detail {

namespace {

bool areSame(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool isBelow(double a, double b)
{
    return a < b || (std::isnan(b) && !std::isnan(a));
}

}  // namespace

Votes::Votes(const Subsamples& subsamples, std::size_t voxels)
    : along_(subsamples.x), voxels_(voxels), labels_(voxels)
{
}

void Votes::begin(std::size_t voxels, const double* nearest)
{
    labels_.resize(voxels);
    for (std::size_t n = 0; n < voxels; ++n) {
        voxels_[n].begin(nearest[n]);
    }
}

void Votes::take(std::size_t first, const double* readings, std::size_t count)
{
    Voxel* voxel = voxels_.data() + first / along_;
    std::size_t left = along_ - first % along_;
    for (const double* const end = readings + count; readings != end; ++voxel) {
        left = std::min(left, static_cast<std::size_t>(end - readings));
        for (std::size_t n = 0, next = 0; n < left; n = next) {
            while (next < left && readings[next] == readings[n]) {
                ++next;
            }
            next = std::max(next, n + 1);  // NaN, which equals nothing
            voxel->add(readings[n], next - n);
        }
        readings += left;
        left = along_;
    }
}

bool Votes::goesOn()
{
    bool goesOn = false;
    for (std::size_t n = 0; n < labels_.size(); ++n) {
        goesOn = voxels_[n].elect() || goesOn;
    }
    return goesOn;
}

const double* Votes::finish()
{
    for (std::size_t n = 0; n < labels_.size(); ++n) {
        labels_[n] = voxels_[n].elected();
    }
    return labels_.data();
}

void Votes::Voxel::begin(double nearestLabel)
{
    used = 0;
    isLater = isPassed = false;
    winner = nearest = {nearestLabel, 0};
}

void Votes::Voxel::add(double label, std::uint64_t votes)
{
    for (std::size_t n = 0; n < used; ++n) {
        if (areSame(counts[n].label, label)) {
            counts[n].votes += votes;
            return;
        }
    }
    if (!isLater || isBelow(last, label)) {
        addNew(label, votes);
    }
}

// Where there is no room, the highest label makes way, and waits for the next pass. It never comes
// back in this one, as those that are counted only become lower; so the votes of those are all.
void Votes::Voxel::addNew(double label, std::uint64_t votes)
{
    if (used < kRoom) {
        counts[used++] = {label, votes};
        return;
    }
    isPassed = true;
    Count* const highest =
        std::max_element(counts, counts + used,
                         [](const Count& a, const Count& b) { return isBelow(a.label, b.label); });
    if (isBelow(label, highest->label)) {
        *highest = {label, votes};
    }
}

// Ends a pass; whether there must be another one.
bool Votes::Voxel::elect()
{
    for (std::size_t n = 0; n < used; ++n) {
        const auto& [label, votes] = counts[n];
        if (votes > winner.votes || (votes == winner.votes && isBelow(label, winner.label))) {
            winner = counts[n];
        }
        if (areSame(label, nearest.label)) {
            nearest = counts[n];
        }
        last = n == 0 || isBelow(last, label) ? label : last;
    }
    used = 0;
    isLater = true;
    return std::exchange(isPassed, false);
}

double Votes::Voxel::elected() const
{
    return nearest.votes == winner.votes ? nearest.label : winner.label;
}

}  // namespace volux::resample::detail
