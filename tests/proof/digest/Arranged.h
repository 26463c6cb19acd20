// Memory in which the voxels of a view are arranged as a request says.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "ViewCorpus.h"
#include "support/RandomViews.h"

namespace volux::digest {

using resample::View;
using resample::VoxelLayout;

constexpr std::int64_t kFarGap = (std::int64_t{1} << 32) + 5;

// The distances of a view, and where among its elements the first voxel is. The elements are in
// pieces, of which there are several if the last axis is far.
struct Distances {
    VoxelLayout layout;
    std::int64_t first = 0;
    std::int64_t elements = 1;  // of a piece
    std::int64_t pieces = 1;
    std::int64_t apart = 0;  // elements from a piece to the next

    Distances(const Arrangement& arrangement, const std::array<unsigned int, 4>& extents,
              const std::array<bool, 4>& repeats)
    {
        layout.width = extents[0];
        layout.height = extents[1];
        layout.depth = extents[2];
        layout.channels = extents[3];
        std::int64_t* const strides[] = {&layout.strideX, &layout.strideY, &layout.strideZ,
                                         &layout.strideC};
        for (std::size_t n = 0; n < 4; ++n) {
            const std::size_t axis = arrangement.axes[n];
            const bool isFar = arrangement.isFar && n == 3 && axis != 0;  // a row is one piece
            const std::int64_t near = elements + arrangement.gap;
            const std::int64_t stride = repeats[axis] ? 0 : isFar ? near + kFarGap : near;
            const std::int64_t span = stride * (extents[axis] - 1);
            first += arrangement.isFlipped[axis] ? span : 0;
            *strides[axis] = arrangement.isFlipped[axis] ? -stride : stride;
            if (stride > kFarGap) {
                pieces = extents[axis];
                apart = stride;
            } else {
                elements += span;
            }
        }
    }
};

// Memory of zeros in pieces, each alone in the address space: an emulator would count the pages in
// between.
class Pieces {
public:
    Pieces(std::size_t count, std::size_t bytes, std::size_t apart)
        : bytes_(bytes), apart_(apart), start_(count == 1 ? nullptr : kFar)
    {
        for (std::size_t n = 0; n < count; ++n)
            map(n);
    }
    ~Pieces()
    {
        for (const auto& [first, size] : mapped_)
            munmap(first, size);
    }
    Pieces(const Pieces&) = delete;
    Pieces& operator=(const Pieces&) = delete;

    unsigned char* start() const { return start_; }

private:
    static constexpr std::size_t kPage = 4096;
    // Neither programs nor libraries nor stacks are there.
    static inline unsigned char* const kFar =
        reinterpret_cast<unsigned char*>(std::uintptr_t{1} << 44U);

    void map(std::size_t piece)
    {
        const std::size_t into = piece * apart_ % kPage;
        unsigned char* const wanted =
            start_ == nullptr ? nullptr : start_ + (piece * apart_ - into);
        void* const found =
            mmap(wanted, into + bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (found == MAP_FAILED)
            throw std::bad_alloc();
        mapped_.emplace_back(found, into + bytes_);
        if (start_ == nullptr)
            start_ = static_cast<unsigned char*>(found);
        else if (found != wanted)
            throw std::runtime_error("the address space has no room for a far piece");
    }

    std::size_t bytes_;
    std::size_t apart_;
    unsigned char* start_;
    std::vector<std::pair<void*, std::size_t>> mapped_;
};

// Memory of zeros, and the view of it.
template <class T>
class Arranged {
public:
    explicit Arranged(const Distances& distances)
        : elements_(static_cast<std::size_t>(distances.elements)),
          pieces_(static_cast<std::size_t>(distances.pieces), elements_ * sizeof(T),
                  static_cast<std::size_t>(distances.apart) * sizeof(T))
    {
        view = View<T>(data() + distances.first, distances.layout);
    }

    T* data() const { return reinterpret_cast<T*>(pieces_.start()); }
    std::size_t elements() const { return elements_; }

    View<T> view;

private:
    std::size_t elements_;
    Pieces pieces_;
};

// A source, whose voxels are those of a volume.
template <class T>
class ArrangedSource : public Arranged<T> {
public:
    explicit ArrangedSource(const ViewedVolume<T>& source)
        : Arranged<T>({source.arrangement, extentsOf(source.wrapped.volume), source.repeats()})
    {
        const test::Volume<T>& volume = source.wrapped.volume;
        this->view.spacing = core::VoxelSize(volume.spacing.x, volume.spacing.y, volume.spacing.z);
        test::forEachElement(
            this->view, [&](auto... at) { test::elementOf(this->view, at...) = volume.at(at...); });
    }

private:
    static std::array<unsigned int, 4> extentsOf(const test::Layout& layout)
    {
        const Extents& e = layout.extents;
        return {e.width, e.height, e.depth, layout.channels};
    }
};

// A result: nothing may be written between its voxels.
template <class R>
class ArrangedResult : public Arranged<R> {
public:
    ArrangedResult(const Arrangement& arrangement, const Grid& grid, unsigned int channels)
        : Arranged<R>({arrangement, {grid.width, grid.height, grid.depth, channels}, {}})
    {
        std::fill_n(this->data(), this->elements(), R{77});
    }

    // Its voxels, x fastest, all channels of a voxel side by side.
    std::vector<double> take()
    {
        std::vector<double> taken;
        test::forEachElement(this->view, [&](auto... at) {
            R& element = test::elementOf(this->view, at...);
            taken.push_back(static_cast<double>(element));
            element = R{77};
        });
        if (std::count(this->data(), this->data() + this->elements(), R{77}) !=
            static_cast<std::ptrdiff_t>(this->elements()))
            throw std::runtime_error("a call wrote between the voxels of its result");
        return taken;
    }
};

// Positions in three arrays, with nothing between them that anybody could take for one.
class ArrangedPlaces {
public:
    explicit ArrangedPlaces(const Places& places) : stride_(places.stride)
    {
        const auto count = static_cast<std::int64_t>(places.positions.size());
        first_ = stride_ < 0 ? -stride_ * (count - 1) : 0;
        for (std::vector<double>& array : arrays_)
            array.assign(static_cast<std::size_t>(std::abs(stride_) * (count - 1) + 1), 1e9);
        for (std::int64_t n = 0; n < count; ++n) {
            const resample::Position& p = places.positions[static_cast<std::size_t>(n)];
            const auto at = static_cast<std::size_t>(first_ + n * stride_);
            arrays_[0][at] = p.x;
            arrays_[1][at] = p.y;
            arrays_[2][at] = p.z;
        }
    }

    resample::Positions positions() const
    {
        return {arrays_[0].data() + first_, arrays_[1].data() + first_, arrays_[2].data() + first_,
                stride_};
    }

private:
    std::int64_t stride_;
    std::int64_t first_ = 0;
    std::array<std::vector<double>, 3> arrays_;
};

}  // namespace volux::digest
