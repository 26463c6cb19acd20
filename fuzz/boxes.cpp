// Crop, draw, the planes, fill and single voxels, on volumes of any layout between
// forbidden pages, each compared with its plain definition.
#include <algorithm>
#include <array>

#include "Input.h"
#include "support/GuardedPages.h"
#include "support/ModelledImage.h"
#include "support/PlaneFunctions.h"

namespace volux::fuzz {
namespace {

using core::ImageSize;
using test::Layout;
using test::require;

constexpr int kMostCalls = 12;

/// Extents up to 6, strides up to 63 and thus ever so often overlapping, or one of the usual ones.
Layout someLayout(Input& input, unsigned int channels)
{
    const unsigned int w = 1 + input.below(6);
    const unsigned int h = 1 + input.below(6);
    const unsigned int d = 1 + input.below(6);
    const unsigned int kind = input.below(8);
    if (kind < std::size(test::kLayouts))
        return test::kLayouts[kind](w, h, d, channels);
    Layout layout{"any", {w, h, d}, channels, 0, 0, 0, 0};
    for (unsigned int* stride :
         {&layout.strideX, &layout.strideY, &layout.strideZ, &layout.strideC})
        *stride = input.below(64);
    return layout;
}

/// A volume as it must be, and an image that wraps the same elements between guards: exactly from
/// the first to the last that the layout addresses.
template <class T>
class Guarded {
public:
    Guarded(test::GuardedPages& pages, Input& input, unsigned int channels)
        : expected_(test::someVolume<T>(someLayout(input, channels), input.raw<std::uint8_t>()))
    {
        count_ = expected_.addressed();
        data_ = pages.place<T>(count_, input.flag());
        std::copy_n(expected_.first(), count_, data_);
        test::wrap(data_, expected_, &image_);
    }

    void compare() const
    {
        for (std::size_t i = 0; i < count_; ++i)
            if (std::memcmp(data_ + i, expected_.first() + i, sizeof(T)) != 0)
                throw test::Difference(test::withBits(data_[i]) + ", not " +
                                       test::withBits(expected_.first()[i]) + ", in " +
                                       test::placeOf(expected_, i));
    }

    const Layout& layout() const { return expected_; }
    test::Volume<T>& expected() { return expected_; }
    core::VxImage<T>& image() { return image_; }

private:
    test::Volume<T> expected_;
    std::size_t count_ = 0;
    T* data_ = nullptr;
    core::VxImage<T> image_;
};

/// Near the extent, or any.
unsigned int someIndex(Input& input, unsigned int extent)
{
    const unsigned int small = input.below(16);
    return small < 15 ? small % (extent + 2) : input.raw<unsigned int>();
}

void requireCode(core::ErrorType expected, core::ErrorType code)
{
    if (code != expected)
        throw test::Difference("code " + std::to_string(code) + ", not " +
                               std::to_string(expected));
}

template <class T>
class Calls {
public:
    Calls(Input& input, test::GuardedPages& pages, test::GuardedPages& otherPages)
        : input_(input),
          volume_(pages, input, 1 + input.below(3)),
          other_(otherPages, input, input.below(8) == 0 ? 1 : volume_.layout().channels),
          out_(heap_)
    {
        setSpacing();
    }

    void run()
    {
        for (int i = 0; i < kMostCalls && !input_.empty(); ++i) {
            step();
            volume_.compare();
            other_.compare();
            out_.compare();
        }
        out_.destroy();
        const char* const fault = heap_.fault();
        require(fault == nullptr, fault);
    }

private:
    void setSpacing()
    {
        if (input_.flag())
            volume_.image().setVoxelSize(input_.raw<double>(), input_.raw<double>(), 2.0);
    }

    /// The last voxel that is cropped, and how many; 0 and more than there are for a begin beyond.
    static std::array<unsigned int, 2> clipped(unsigned int extent, unsigned int first,
                                               unsigned int last)
    {
        const unsigned int end = std::min(extent - 1, last);
        return {end, end - first + 1};
    }

    void crop()
    {
        const Layout& l = volume_.layout();
        const core::Rect box(
            someIndex(input_, l.extents.width), someIndex(input_, l.extents.width),
            someIndex(input_, l.extents.height), someIndex(input_, l.extents.height),
            someIndex(input_, l.extents.depth), someIndex(input_, l.extents.depth));
        if (input_.below(8) == 0)
            return requireCode(core::ERR_INVALID_ARGUMENT, volume_.image().crop(box, nullptr));
        out_.make(cropModel(box), false, [&] { return volume_.image().crop(box, &out_.image()); });
    }

    test::Effect cropModel(const core::Rect& box)
    {
        if (box.xEnd < box.xStart || box.yEnd < box.yStart || box.zEnd < box.zStart)
            return test::returning(core::ERR_INVALID_ARGUMENT);
        const Layout& l = volume_.layout();
        const auto [endX, width] = clipped(l.extents.width, box.xStart, box.xEnd);
        const auto [endY, height] = clipped(l.extents.height, box.yStart, box.yEnd);
        const auto [endZ, depth] = clipped(l.extents.depth, box.zStart, box.zEnd);
        const test::ModelHeap heap{false, test::SlotHeap::kMostBytes};
        const auto effect =
            out_.model().initialize(ImageSize(width, height, depth, l.channels), heap);
        if (effect.thrown != nullptr || effect.code != core::SUCCESS)
            return effect;
        const auto fields = test::fieldsOf(volume_.image());
        out_.model().setVoxelSize(fields.voxelSizeX, fields.voxelSizeY, fields.voxelSizeZ);
        if (box.xStart <= endX && box.yStart <= endY && box.zStart <= endZ)
            expect(test::naiveCrop(volume_.expected(), box));
        return effect;
    }

    /// The values of a dense volume as those that the output must hold from its first on.
    void expect(const test::Volume<T>& volume)
    {
        std::copy_n(volume.first(), volume.span(), out_.model().values()->begin());
    }

    void draw()
    {
        const Layout& to = volume_.layout();
        const unsigned int x = someIndex(input_, to.extents.width);
        const unsigned int y = someIndex(input_, to.extents.height);
        const unsigned int z = someIndex(input_, to.extents.depth);
        core::ErrorType code = core::SUCCESS;
        if (to.channels != other_.layout().channels)
            code = core::ERR_INVALID_CHANNEL;
        else if (x >= to.extents.width || y >= to.extents.height || z >= to.extents.depth)
            code = core::ERR_INVALID_ARGUMENT;
        else
            test::naiveDraw(volume_.expected(), other_.expected(), x, y, z);
        requireCode(code, volume_.image().draw(other_.image(), x, y, z));
    }

    auto planeFunctions() { return test::AllPlaneFunctions<T>{}.table[input_.below(3)]; }

    void getPlane()
    {
        const auto plane = planeFunctions();
        const Layout& l = volume_.layout();
        const unsigned int index = someIndex(input_, extent(l, plane.across));
        if (input_.below(8) == 0)
            return requireCode(core::ERR_NULL_POINTER, plane.get(index, volume_.image(), nullptr));
        out_.make(getPlaneModel(plane, index), false,
                  [&] { return plane.get(index, volume_.image(), &out_.image()); });
    }

    test::Effect getPlaneModel(const test::PlaneFunctions<T>& plane, unsigned int index)
    {
        const Layout& l = volume_.layout();
        if (index >= extent(l, plane.across))
            return test::returning(test::invalid(plane.across));
        const ImageSize size(plane.planeWidth(l), plane.planeHeight(l), 1, l.channels);
        const auto effect =
            out_.model().setImageSize(size, test::ModelHeap{false, test::SlotHeap::kMostBytes});
        if (out_.model().reserved())
            expect(test::naiveGetPlane(plane, volume_.expected(), index));
        return effect;
    }

    /// Puts the first slice of the other volume back.
    void setPlane()
    {
        const auto plane = planeFunctions();
        const Layout& to = volume_.layout();
        const Layout& from = other_.layout();
        const unsigned int index = someIndex(input_, extent(to, plane.across));
        if (input_.below(8) == 0)
            return requireCode(core::ERR_NULL_POINTER, plane.set(index, other_.image(), nullptr));
        core::ErrorType code = core::SUCCESS;
        if (index >= extent(to, plane.across))
            code = test::invalid(plane.across);
        else if (from.extents.width != plane.planeWidth(to))
            code = test::invalid(plane.planeX);
        else if (from.extents.height != plane.planeHeight(to))
            code = test::invalid(plane.planeY);
        else if (from.channels != to.channels)
            code = core::ERR_INVALID_CHANNEL;
        else
            naiveSetPlane(plane, volume_.expected(), other_.expected(), index);
        requireCode(code, plane.set(index, other_.image(), &volume_.image()));
    }

    void fill()
    {
        const T value = test::someValue<T>(input_.raw<std::uint8_t>());
        if (input_.flag()) {
            test::naiveFill(volume_.expected(), value);
            return requireCode(core::SUCCESS, volume_.image().fill(value));
        }
        const unsigned int channel = someIndex(input_, volume_.layout().channels);
        const bool there = channel < volume_.layout().channels;
        if (there)
            test::naiveFillChannel(volume_.expected(), channel, value);
        requireCode(there ? core::SUCCESS : core::ERR_INVALID_CHANNEL,
                    volume_.image().fill(channel, value));
    }

    void voxel()
    {
        const Layout& l = volume_.layout();
        const unsigned int x = someIndex(input_, l.extents.width),
                           y = someIndex(input_, l.extents.height);
        const unsigned int z = someIndex(input_, l.extents.depth),
                           c = someIndex(input_, l.channels);
        const int at[] = {static_cast<int>(x), static_cast<int>(y), static_cast<int>(z),
                          static_cast<int>(c)};
        const bool inside =
            x < l.extents.width && y < l.extents.height && z < l.extents.depth && c < l.channels;
        core::VxImage<T>& image = volume_.image();
        require(image.hasVoxel(at[0], at[1], at[2], at[3]) == inside, "hasVoxel is wrong");
        const T stored = inside ? volume_.expected().at(x, y, z, c) : T{};
        require(test::sameBits(image.getValueVoxel(at[0], at[1], at[2], at[3]), stored),
                "another voxel is read");
        const T value = test::someValue<T>(input_.raw<std::uint8_t>());
        if (inside)
            volume_.expected().at(x, y, z, c) = value;
        requireCode(inside ? core::SUCCESS : core::ERR_INVALID_ARGUMENT,
                    image.setValueVoxel(at[0], at[1], at[2], at[3], value));
    }

    void step()
    {
        switch (input_.below(8)) {
            case 0:
            case 1:
                return crop();
            case 2:
                return draw();
            case 3:
                return getPlane();
            case 4:
                return setPlane();
            case 5:
                return fill();
            case 6:
                return voxel();
            default:
                return out_.terminate(false);
        }
    }

    Input& input_;
    Guarded<T> volume_;
    Guarded<T> other_;
    test::SlotHeap heap_;
    test::ModelledImage<T> out_;
};

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace volux::fuzz;
    static volux::test::GuardedPages pages;
    static volux::test::GuardedPages otherPages;
    Input input(data, size);
    volux::test::withElementType(
        input.below(7), [&](auto zero) { Calls<decltype(zero)>(input, pages, otherPages).run(); });
    return 0;
}
