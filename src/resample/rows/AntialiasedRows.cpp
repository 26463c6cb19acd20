#include "AntialiasedRows.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "Subsamples.h"
#include "resample/vectors/Elements.h"
#include "resample/vectors/Labels.h"

namespace volux::resample::detail {

namespace {

Range finer(Range range, std::size_t n)
{
    return {range.first * n, range.end * n};
}

Range clamped(Range range, Range to)
{
    return {std::clamp(range.first, to.first, to.end), std::clamp(range.end, to.first, to.end)};
}

// One slice of lines of the finer grid: where a tile has its sub-samples, and which of them are in
// view.
struct FinerSlice {
    Range columns;
    Range rows;
    Range columnsInView;
    Range rowsInView;
    std::size_t rowsOfVoxel;
    const double* outside;  // a line out of view

    // The number that folding gives the first sub-sample of a line.
    std::size_t firstOf(std::size_t line) const
    {
        return (line - rows.first) / rowsOfVoxel * (columns.end - columns.first);
    }
};

void foldOutside(const FinerSlice& slice, Range lines, Fold& fold)
{
    for (std::size_t line = lines.first; line < lines.end; ++line) {
        fold.take(slice.firstOf(line), slice.outside, slice.columns.end - slice.columns.first);
    }
}

// Folds lines in view, between those parts of them that are out of view.
class FoldLines : public LineSink {
public:
    FoldLines(const FinerSlice& slice, Fold& fold) : slice_(slice), fold_(fold) {}

    void take(std::size_t line, const double* readings) override
    {
        const auto& [columns, rows, inView, rowsInView, rowsOfVoxel, outside] = slice_;
        std::size_t first = slice_.firstOf(rowsInView.first + line);
        const auto fold = [&](const double* samples, Range range) {
            fold_.take(first, samples, range.end - range.first);
            first += range.end - range.first;
        };
        fold(outside, {columns.first, inView.first});
        fold(readings, inView);
        fold(outside, {inView.end, columns.end});
    }

private:
    const FinerSlice& slice_;
    Fold& fold_;
};

}  // namespace

bool AntialiasedRows::serve(const Task& task)
{
    const bool isNearest = task.source.reading.kernel == Kernel::NEAREST;
    const bool haveLines = !isNearest && task.subsamples.x <= kTile &&
                           haveWords(task.source.channel(0), task.source.image.elementBytes);
    return countOf(task.subsamples) > 1 && !task.displacement && task.slab.planes == 1 &&
           !task.source.reading.isOwn && (isNearest ? VoxelMeans::serve(task) : haveLines) &&
           AxisTables::serve(task.map, finerBox(task.output, task.subsamples));
}

AntialiasedRows::AntialiasedRows(const Task& task, Overflow overflow)
    : task_(task),
      overflow_(overflow),
      nearest_(task),
      axes_(task.map, finerBox(task.output, task.subsamples)),
      outside_(kTile, task.source.reading.outside.value),
      voxels_(task, overflow),
      areVoxels_(VoxelMeans::serve(task))
{
    if (task.source.reading.edgeEnds) {
        axes_.endEdges(task.source.region);
    }
}

void AntialiasedRows::operator()(std::size_t first, std::size_t end) const
{
    const UntypedImage& to = task_.destination;
    const std::unique_ptr<Fold> fold = foldOf(task_, kTile * kRows);
    for (std::size_t row = first; row < end;) {
        const std::size_t slice = row / to.height;
        const std::size_t y = row - slice * to.height;
        const std::size_t rows = std::min({kRows, to.height - y, end - row});
        for (unsigned int c = 0; c < to.channels; ++c) {
            if (!areVoxels_ || !voxels_.fill(slice, {y, y + rows}, c)) {
                fillTiles(slice, {y, y + rows}, c, *fold);
            }
        }
        row += rows;
    }
}

void AntialiasedRows::fillTiles(std::size_t slice, Range rows, unsigned int c, Fold& fold) const
{
    const std::size_t width = task_.destination.width;
    const std::size_t columns = kTile / task_.subsamples.x;
    for (std::size_t x = 0; x < width; x += columns) {
        fill({{x, std::min(x + columns, width)}, rows, slice, c}, fold);
    }
}

void AntialiasedRows::fill(const Tile& tile, Fold& fold) const
{
    const std::size_t slices = task_.subsamples.z;
    const std::size_t width = tile.columns.end - tile.columns.first;
    const std::size_t voxels = width * (tile.rows.end - tile.rows.first);
    std::vector<double> nearest;
    if (task_.source.reading.isLabels) {
        nearest.resize(voxels);
        readNearest(tile, nearest.data());
    }
    fold.begin(voxels, nearest.data());
    do {
        for (std::size_t n = 0; n < slices; ++n) {
            foldSlice(tile, tile.slice * slices + n, fold);
        }
    } while (fold.goesOn());
    const UntypedImage& to = task_.destination;
    const double* readings = fold.finish();
    for (std::size_t y = tile.rows.first; y < tile.rows.end; ++y, readings += width) {
        storeElements(
            {to.type, overflow_}, readings, width, to.strideX,
            to.at(static_cast<std::int64_t>(tile.columns.first), static_cast<std::int64_t>(y),
                  static_cast<std::int64_t>(tile.slice), tile.channel));
    }
}

void AntialiasedRows::readNearest(const Tile& tile, double* labels) const
{
    const core::Rect& box = task_.output;
    const std::size_t width = tile.columns.end - tile.columns.first;
    for (std::size_t y = tile.rows.first; y < tile.rows.end; ++y, labels += width) {
        nearest_.read(box.xStart + static_cast<unsigned int>(tile.columns.first),
                      box.yStart + static_cast<unsigned int>(y),
                      box.zStart + static_cast<unsigned int>(tile.slice), tile.channel, width,
                      labels);
    }
}

void AntialiasedRows::foldSlice(const Tile& tile, std::size_t z, Fold& fold) const
{
    const Range columns = finer(tile.columns, task_.subsamples.x);
    const Range rows = finer(tile.rows, task_.subsamples.y);
    FinerSlice slice = {columns,
                        rows,
                        clamped(axes_.columns, columns),
                        clamped(axes_.rows, rows),
                        task_.subsamples.y,
                        outside_.data()};
    if (!axes_.slices.holds(z) || slice.columnsInView.isEmpty()) {
        slice.rowsInView = {rows.end, rows.end};
    }
    foldOutside(slice, {rows.first, slice.rowsInView.first}, fold);
    if (!slice.rowsInView.isEmpty()) {
        FoldLines sink(slice, fold);
        const Reading& reading = task_.source.reading;
        const Lines lines = {task_.source.channel(tile.channel),
                             reading.kernel,
                             reading.outside,
                             axes_.x.data() + slice.columnsInView.first,
                             axes_.y.data() + slice.rowsInView.first,
                             axes_.z[z],
                             slice.columnsInView.end - slice.columnsInView.first,
                             slice.rowsInView.end - slice.rowsInView.first};
        reading.isLabels ? readLabelLines(lines, sink) : readLines(lines, sink);
    }
    foldOutside(slice, {slice.rowsInView.end, rows.end}, fold);
}

}  // namespace volux::resample::detail
