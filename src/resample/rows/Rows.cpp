#include "Rows.h"

#include <algorithm>

#include "AlignedRows.h"
#include "AntialiasedRows.h"
#include "Cost.h"
#include "ObliqueRows.h"
#include "Subsamples.h"
#include "Work.h"

namespace volux::resample::detail {

namespace {

// Samples in one part of the work, about.
constexpr double kPart = 1U << 14U;

}  // namespace

bool fillRows(const Task& task, const Options& options)
{
    const auto share = [&](const auto& rows, const Job& job) {
        return shareOut(job, options,
                        [&](std::size_t first, std::size_t end) { rows(first, end); });
    };
    const UntypedImage& to = task.destination;
    const Reading& reading = task.source.reading;
    const double rowSamples =
        1.0 * to.width * to.channels * static_cast<double>(countOf(task.subsamples));
    const std::size_t rowCount = std::size_t{to.height} * to.depth;
    const double samples = rowSamples * static_cast<double>(rowCount);
    const auto partRows = static_cast<std::size_t>(kPart / rowSamples);
    if (AlignedRows::serve(task)) {
        return share(AlignedRows(task, options.overflow),
                     {rowCount, partRows, samples * costAlongAxes(reading)});
    }
    if (AntialiasedRows::serve(task)) {
        return share(AntialiasedRows(task, options.overflow),
                     {rowCount, std::max(partRows, AntialiasedRows::kRows),
                      samples * costAlongAxes(reading)});
    }
    const ObliqueRows rows(task, options.overflow);
    const double displaced = task.displacement ? kCostOfField / to.channels : 0.0;
    return share(
        rows, {rows.boxes(), 1, samples * task.slab.planes * (costAnywhere(reading) + displaced)});
}

}  // namespace volux::resample::detail
