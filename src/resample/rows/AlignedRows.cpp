#include "AlignedRows.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Subsamples.h"
#include "exact/ElementTypes.h"
#include "exact/Rules.h"
#include "resample/vectors/Elements.h"
#include "resample/vectors/Labels.h"
#include "resample/vectors/Lines.h"

namespace volux::resample::detail {

namespace {

// No number of bytes between two voxels, whatever the strides.
constexpr std::int64_t kOutside = std::numeric_limits<std::int64_t>::min();

// The nearest voxel along one axis, from the first that the brick holds; kOutside where the value
// outside takes its place.
std::int64_t nearestBytes(double coordinate, bool isInView, const Axis& axis,
                          const Outside& outside)
{
    const int index = exact::firstNeighbour<Kernel::NEAREST>(coordinate);
    const bool isRead = isInView && (!outside.isConstant || axis.holds(index));
    return isRead ? axis.bytes(axis.clamped(index)) : kOutside;
}

template <class Element>
void fillElements(const unsigned char* element, std::size_t count, std::int64_t stride,
                  unsigned char* to)
{
    const auto pitch = static_cast<std::ptrdiff_t>(stride);
    for (std::size_t n = 0; n < count; ++n) {
        std::memcpy(to + pitch * static_cast<std::ptrdiff_t>(n), element, sizeof(Element));
    }
}

// A voxel of type T as an element of type R: as it is, or the float or double that a reading of it
// would be.
template <class T, class R>
R readAs(const unsigned char* voxel)
{
    if constexpr (std::is_same_v<T, R>) {
        R element;
        std::memcpy(&element, voxel, sizeof element);
        return element;
    } else {
        return static_cast<R>(elementAt<T>(voxel));
    }
}

// `from` is null where a whole row is outside. No branch: where voxels are outside changes from
// column to column.
template <class T, class R>
void copyElements(const unsigned char* from, const std::vector<std::int64_t>& columns,
                  const unsigned char* outside, std::int64_t stride, unsigned char* to)
{
    const auto pitch = static_cast<std::ptrdiff_t>(stride);
    for (std::size_t n = 0; n < columns.size(); ++n) {
        const bool isOutside = from == nullptr || columns[n] == kOutside;
        const R element = isOutside ? readAs<R, R>(outside) : readAs<T, R>(from + columns[n]);
        std::memcpy(to + pitch * static_cast<std::ptrdiff_t>(n), &element, sizeof element);
    }
}

// Calls `function` with the types of the voxels that are read and of the elements they become.
template <class Function>
void withTypes(core::DataType from, core::DataType to, const Function& function)
{
    exact::withElementType(from, [&](auto voxel) {
        if (from == to) {
            function(voxel, voxel);
        } else if (to == core::DT_FLOAT) {
            function(voxel, exact::Element<float>());
        } else {
            function(voxel, exact::Element<double>());
        }
    });
}

class StoreLines : public LineSink {
public:
    StoreLines(const UntypedImage& to, Overflow overflow, std::size_t columns, unsigned char* first)
        : to_(to), overflow_(overflow), columns_(columns), first_(first)
    {
    }

    void take(std::size_t line, const double* readings) override
    {
        storeElements({to_.type, overflow_}, readings, columns_, to_.strideX,
                      first_ + to_.strideY * static_cast<std::int64_t>(line));
    }

private:
    const UntypedImage& to_;
    Overflow overflow_;
    std::size_t columns_;
    unsigned char* first_;
};

}  // namespace

bool AlignedRows::serve(const Task& task)
{
    return task.slab.planes == 1 && countOf(task.subsamples) == 1 && !task.displacement &&
           !task.source.reading.isOwn &&
           haveWords(task.source.channel(0), task.source.image.elementBytes) &&
           AxisTables::serve(task.map, task.output);
}

AlignedRows::AlignedRows(const Task& task, Overflow overflow)
    : task_(task), overflow_(overflow), axes_(task.map, task.output)
{
    const Reading& reading = task.source.reading;
    if (reading.edgeEnds) {
        axes_.endEdges(task.source.region);
    }
    convert({task.destination.type, overflow}, &reading.outside.value, 1, outside_);
    if (reading.kernel == Kernel::NEAREST) {
        findColumns();
    }
}

void AlignedRows::findColumns()
{
    const UntypedImage& to = task_.destination;
    const Channel channel = task_.source.channel(0);
    isRun_ = channel.type == to.type && channel.x.stride == to.elementBytes &&
             to.strideX == to.elementBytes;
    for (unsigned int n = 0; n < to.width; ++n) {
        columns_.push_back(nearestBytes(axes_.x[n], axes_.columns.holds(n), channel.x,
                                        task_.source.reading.outside));
        isRun_ = isRun_ && columns_[n] == columns_[0] + n * to.elementBytes;
    }
    isRun_ = isRun_ && columns_[0] != kOutside;
}

void AlignedRows::operator()(std::size_t first, std::size_t end) const
{
    const std::size_t height = task_.destination.height;
    for (std::size_t row = first; row < end;) {
        const std::size_t z = row / height;
        const std::size_t last = std::min(end, (z + 1) * height);
        fillSlice(static_cast<unsigned int>(z), static_cast<unsigned int>(row - z * height),
                  static_cast<unsigned int>(last - z * height));
        row = last;
    }
}

void AlignedRows::fillSlice(unsigned int z, unsigned int y, unsigned int yEnd) const
{
    for (unsigned int c = 0; c < task_.destination.channels; ++c) {
        if (task_.source.reading.kernel == Kernel::NEAREST) {
            copySlice(z, y, yEnd, c);
        } else {
            fillLines(z, y, yEnd, c);
        }
    }
}

void AlignedRows::fillLines(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const
{
    const Range all = {0, task_.destination.width};
    Range rows = {std::clamp<std::size_t>(axes_.rows.first, y, yEnd),
                  std::clamp<std::size_t>(axes_.rows.end, y, yEnd)};
    if (!axes_.slices.holds(z) || axes_.columns.isEmpty()) {
        rows = {yEnd, yEnd};
    }
    fillOutside(all, {y, rows.first}, z, c);
    if (!rows.isEmpty()) {
        fillOutside({0, axes_.columns.first}, rows, z, c);
        readLinesInView(z, rows, c);
        fillOutside({axes_.columns.end, all.end}, rows, z, c);
    }
    fillOutside(all, {rows.end, yEnd}, z, c);
}

void AlignedRows::fillOutside(Range columns, Range rows, unsigned int z, unsigned int c) const
{
    const UntypedImage& to = task_.destination;
    exact::withElementType(to.type, [&](auto element) {
        using Element = typename decltype(element)::Type;
        for (std::size_t y = rows.first; !columns.isEmpty() && y < rows.end; ++y) {
            fillElements<Element>(outside_, columns.end - columns.first, to.strideX,
                                  to.at(static_cast<std::int64_t>(columns.first),
                                        static_cast<std::int64_t>(y), z, c));
        }
    });
}

void AlignedRows::readLinesInView(unsigned int z, Range rows, unsigned int c) const
{
    const UntypedImage& to = task_.destination;
    Lines lines = {task_.source.channel(c),
                   task_.source.reading.kernel,
                   task_.source.reading.outside,
                   nullptr,
                   axes_.y.data() + rows.first,
                   axes_.z[z],
                   0,
                   rows.end - rows.first};
    for (std::size_t x = axes_.columns.first; x < axes_.columns.end; x += kTile) {
        lines.x = axes_.x.data() + x;
        lines.columns = std::min(kTile, axes_.columns.end - x);
        StoreLines store(
            to, overflow_, lines.columns,
            to.at(static_cast<std::int64_t>(x), static_cast<std::int64_t>(rows.first), z, c));
        task_.source.reading.isLabels ? readLabelLines(lines, store) : readLines(lines, store);
    }
}

void AlignedRows::copySlice(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const
{
    const UntypedImage& to = task_.destination;
    const Channel channel = task_.source.channel(c);
    const Outside& outside = task_.source.reading.outside;
    const std::int64_t slice = nearestBytes(axes_.z[z], axes_.slices.holds(z), channel.z, outside);
    const auto rowBytes = static_cast<std::size_t>(to.width * to.elementBytes);
    std::int64_t before = kOutside + 1;  // the source row of the destination row before
    for (unsigned int n = y; n < yEnd; ++n) {
        const std::int64_t row = nearestBytes(axes_.y[n], axes_.rows.holds(n), channel.y, outside);
        const bool isOutside = slice == kOutside || row == kOutside;
        unsigned char* const place = to.at(0, n, z, c);
        if (row == before && to.strideX == to.elementBytes) {
            std::memcpy(place, place - to.strideY, rowBytes);
        } else {
            copyRow(isOutside ? nullptr : channel.data + slice + row, place);
        }
        before = row;
    }
}

void AlignedRows::copyRow(const unsigned char* from, unsigned char* to) const
{
    const UntypedImage& image = task_.destination;
    if (isRun_ && from != nullptr) {
        std::memcpy(to, from + columns_[0],
                    static_cast<std::size_t>(image.width * image.elementBytes));
        return;
    }
    withTypes(task_.source.image.type, image.type, [&](auto voxel, auto element) {
        using T = typename decltype(voxel)::Type;
        using R = typename decltype(element)::Type;
        copyElements<T, R>(from, columns_, outside_, image.strideX, to);
    });
}

}  // namespace volux::resample::detail
