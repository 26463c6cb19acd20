#include "AlignedRows.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "exact/ElementTypes.h"
#include "exact/Rules.h"
#include "resample/vectors/Elements.h"
#include "resample/vectors/Lines.h"

namespace volux::resample::detail {

namespace {

// No number of bytes between two voxels, whatever the strides.
constexpr std::int64_t kOutside = std::numeric_limits<std::int64_t>::min();

// Bounds the three tables together, so that none is as large as a volume, even a thin one.
constexpr std::uint64_t kLongestTables = 1U << 20U;

bool runsAlongAxes(const AffineMap& map)
{
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (row != column && map.rows[row][column] != 0.0) {
                return false;
            }
        }
    }
    return true;
}

bool isNear(const Position& p)
{
    const auto near = [](double coordinate) { return std::abs(coordinate) <= kNear; };
    return near(p.x) && near(p.y) && near(p.z);
}

// Padded with zeros to whole vectors.
std::vector<double> coordinates(unsigned int extent, const std::function<double(unsigned int)>& at)
{
    std::vector<double> all(extent + kTile);
    for (unsigned int n = 0; n < extent; ++n) {
        all[n] = at(n);
    }
    return all;
}

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

// `from` is null where a whole row is outside. No branch: where voxels are outside changes from
// column to column.
template <class Element>
void copyElements(const unsigned char* from, const std::vector<std::int64_t>& columns,
                  const unsigned char* outside, std::int64_t stride, unsigned char* to)
{
    const auto pitch = static_cast<std::ptrdiff_t>(stride);
    for (std::size_t n = 0; n < columns.size(); ++n) {
        const bool isOutside = from == nullptr || columns[n] == kOutside;
        unsigned char element[sizeof(Element)];
        std::memcpy(element, isOutside ? outside : from + columns[n], sizeof element);
        std::memcpy(to + pitch * static_cast<std::ptrdiff_t>(n), element, sizeof element);
    }
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
    const core::Rect& box = task.output;
    const UntypedImage& to = task.destination;
    const std::uint64_t entries = std::uint64_t{to.width} + to.height + to.depth;
    const bool moves = task.source.reading.kernel == Kernel::NEAREST;  // elements, as they are
    // Coordinates run from one corner's to the other's.
    return (!moves || task.source.image.type == to.type) && entries <= kLongestTables &&
           runsAlongAxes(task.map) && !task.displacement && task.slab.planes == 1 &&
           !task.source.reading.isOwn &&
           haveWords(task.source.channel(0), task.source.image.elementBytes) &&
           isNear(task.map(box.xStart, box.yStart, box.zStart)) &&
           isNear(task.map(box.xEnd, box.yEnd, box.zEnd));
}

AlignedRows::AlignedRows(const Task& task, Overflow overflow) : task_(task), overflow_(overflow)
{
    const AffineMap& map = task.map;
    const core::Rect& box = task.output;
    const UntypedImage& to = task.destination;
    // The products with the other two indices are zeros of one sign: any index will do.
    x_ = coordinates(to.width, [&](unsigned int n) { return map(box.xStart + n, 0, 0).x; });
    y_ = coordinates(to.height, [&](unsigned int n) { return map(0, box.yStart + n, 0).y; });
    z_ = coordinates(to.depth, [&](unsigned int n) { return map(0, 0, box.zStart + n).z; });
    columnsInView_ = {0, to.width};
    rowsInView_ = {0, to.height};
    slicesInView_ = {0, to.depth};
    const Reading& reading = task.source.reading;
    if (reading.edgeEnds) {
        const ResampleRegion& region = task.source.region;
        columnsInView_ = inView(columnsInView_, x_.data(), region.sourceWidth);
        rowsInView_ = inView(rowsInView_, y_.data(), region.sourceHeight);
        slicesInView_ = inView(slicesInView_, z_.data(), region.sourceDepth);
    }
    convert({to.type, overflow}, &reading.outside.value, 1, outside_);
    if (reading.kernel == Kernel::NEAREST) {
        findColumns();
    }
}

void AlignedRows::findColumns()
{
    const UntypedImage& to = task_.destination;
    const Channel channel = task_.source.channel(0);
    isRun_ = channel.x.stride == to.elementBytes && to.strideX == to.elementBytes;
    for (unsigned int n = 0; n < to.width; ++n) {
        columns_.push_back(
            nearestBytes(x_[n], columnsInView_.holds(n), channel.x, task_.source.reading.outside));
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
    Range rows = {std::clamp<std::size_t>(rowsInView_.first, y, yEnd),
                  std::clamp<std::size_t>(rowsInView_.end, y, yEnd)};
    if (!slicesInView_.holds(z) || columnsInView_.isEmpty()) {
        rows = {yEnd, yEnd};
    }
    fillOutside(all, {y, rows.first}, z, c);
    if (!rows.isEmpty()) {
        fillOutside({0, columnsInView_.first}, rows, z, c);
        readLinesInView(z, rows, c);
        fillOutside({columnsInView_.end, all.end}, rows, z, c);
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
                   y_.data() + rows.first,
                   z_[z],
                   0,
                   rows.end - rows.first};
    for (std::size_t x = columnsInView_.first; x < columnsInView_.end; x += kTile) {
        lines.x = x_.data() + x;
        lines.columns = std::min(kTile, columnsInView_.end - x);
        StoreLines store(
            to, overflow_, lines.columns,
            to.at(static_cast<std::int64_t>(x), static_cast<std::int64_t>(rows.first), z, c));
        readLines(lines, store);
    }
}

void AlignedRows::copySlice(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const
{
    const UntypedImage& to = task_.destination;
    const Channel channel = task_.source.channel(c);
    const Outside& outside = task_.source.reading.outside;
    const std::int64_t slice = nearestBytes(z_[z], slicesInView_.holds(z), channel.z, outside);
    const auto rowBytes = static_cast<std::size_t>(to.width * to.elementBytes);
    std::int64_t before = kOutside + 1;  // the source row of the destination row before
    for (unsigned int n = y; n < yEnd; ++n) {
        const std::int64_t row = nearestBytes(y_[n], rowsInView_.holds(n), channel.y, outside);
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
    exact::withElementType(image.type, [&](auto element) {
        using Element = typename decltype(element)::Type;
        copyElements<Element>(from, columns_, outside_, image.strideX, to);
    });
}

}  // namespace volux::resample::detail
