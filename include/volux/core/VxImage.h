/// @file
/// The container: a volume of voxels with its storage, its spacing and every way of reading it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "volux/core/DataType.h"
#include "volux/core/ErrorType.h"
#include "volux/core/Export.h"
#include "volux/core/Geometry.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"
#include "volux/core/detail/Served.h"

namespace volux::core {

namespace detail {

template <class T>
struct Layout;

// Multiplies signed 64-bit numbers, so that a negative index counts backwards. The stride is read
// as a signed number, not converted to one: g++ then sees that it may be 1 and vectorises loops
// over x.
inline std::int64_t elements(const std::uint64_t& stride, int index)
{
    return reinterpret_cast<const std::int64_t&>(stride) * index;
}

}  // namespace detail

/// A volume of width x height x depth voxels, each with one or more channels of type T.
///
/// Channel c of voxel (x, y, z) is element strideX*x + strideY*y + strideZ*z + strideC*c of the
/// buffer. Sizing an image interleaves its channels: the strides are channels, width*channels,
/// width*height*channels and 1. A copy takes the strides of its source.
///
/// An image is in one of three states:
/// - Empty: it has no buffer. A new image is Empty, and so is any image after terminate().
/// - Owning: it has a zero-filled block of the heap (calloc) and frees it.
/// - Wrapping: it uses a block of the caller's, which it never frees or resizes.
///
/// T is unsigned char, short, unsigned short, int, unsigned int, float or double.
///
/// Units: extents, indices and boxes are in voxels, strides in elements. A physical position is a
/// voxel position times the spacing; there is no origin and no direction.
///
/// Errors: a member that can fail on its arguments returns an ErrorType, and a failure has changed
/// nothing unless the member says otherwise. Misuse of the lifecycle throws base::Exception.
///
/// Threads: nothing is locked. Const members, getters and crop() only read the image; any number of
/// threads may call them while nobody modifies it. Every other member modifies the image and must
/// not run at the same time as any other use of it.
template <class T>
class VOLUX_CORE_API VxImage {
    static_assert(detail::isElementType<T>,
                  "volux::core::VxImage holds unsigned char, short, unsigned short, int, "
                  "unsigned int, float or double.");

public:
    /// Makes an Empty image: extents 0 and spacing 1.0 along each axis. Never fails.
    VxImage();

    /// Frees the block of an Owning image; a caller's block stays as it is.
    ~VxImage();

    /// @name Storage, extents in voxels
    /// Each member modifies the image, on one thread at a time.
    /// @{

    /// Makes an Empty image Owning, with every value 0. O(1) apart from the allocation.
    /// @return the codes of setImageSize().
    /// @throws base::Exception if the image has a buffer.
    ErrorType initialize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                         unsigned int sizeC);

    /// Makes an Empty image an Owning copy of `other`, with its extents, strides and spacing; its
    /// values are copied if `copyData` is true and 0 otherwise. O(bytes).
    /// @return ERR_ALLOCATION_FAILED after the geometry has been copied; the buffer is null.
    /// @throws base::Exception if the image has a buffer.
    ErrorType initialize(const VxImage& other, bool copyData);

    /// Makes an Empty image Wrapping. `data` must hold sizeX*sizeY*sizeZ*sizeC elements with
    /// interleaved channels and outlive the image's use of it. The spacing stays. O(1).
    /// @return ERR_NULL_POINTER for a null `data`; then ERR_INVALID_ARGUMENT for an extent of 0 or
    ///         above 2^31-1, or for a byte count that does not fit 64 bits.
    /// @throws base::Exception if the image has a buffer, whatever the arguments.
    ErrorType initializeWithPointer(T* data, unsigned int sizeX, unsigned int sizeY,
                                    unsigned int sizeZ, unsigned int sizeC);

    /// Returns the image to the state of a new one. Frees an Owning image's block. Never fails.
    void terminate();

    /// Resizes an Empty or Owning image and interleaves its channels. The spacing stays.
    ///
    /// A block that is large enough is kept, and old values show through the new strides; otherwise
    /// the image gets a fresh block of zeros. Only the capacity is compared, and it survives a
    /// failed allocation: a size that the lost block could hold then succeeds without a buffer.
    /// @return ERR_INVALID_ARGUMENT as for initializeWithPointer(); ERR_ALLOCATION_FAILED after
    ///         extents and strides have been set; the buffer is null.
    /// @throws base::Exception if the image is Wrapping.
    ErrorType setImageSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                           unsigned int sizeC);
    ErrorType setImageSize(const ImageSize& size);  ///< the same with the four extents of `size`

    /// Copies `bytes` bytes from `data` to the start of the buffer and ignores the strides. The two
    /// may overlap; neither pointer is tested.
    /// @return ERR_INVALID_ARGUMENT unless `bytes` is the product of the extents and sizeof(T).
    ErrorType setImageData(const void* data, std::size_t bytes);

    /// Sets the strides, in elements. Nothing is tested and no value is moved. The x stride comes
    /// last because the order is part of the interface. A copy takes these strides, but its block
    /// holds width*height*depth*channels elements only.
    void setImageStride(unsigned int newStrideY, unsigned int newStrideZ, unsigned int newStrideC,
                        unsigned int newStrideX);
    /// @}

    /// @name Spacing, in physical units per voxel
    /// @{

    /// Sets the spacing along each axis; modifies the image, on one thread at a time.
    /// @return ERR_INVALID_ARGUMENT if a spacing compares at or below zero; NaN does not.
    ErrorType setVoxelSize(double x, double y, double z);
    ErrorType setVoxelSize(const VoxelSize& size);  ///< the same with the three values of `size`

    // getVoxelSize, getImageSize and getDataType are not const: the exported names say so.

    /// Stores the spacing through three pointers.
    /// @return ERR_NULL_POINTER if any of them is null.
    ErrorType getVoxelSize(double* x, double* y, double* z)
    {
        if (z == nullptr || getVoxelSize(x, y) != SUCCESS) {
            return ERR_NULL_POINTER;
        }
        *z = voxelSizeZ;
        return SUCCESS;
    }

    /// Stores the spacing along x and y. @return ERR_NULL_POINTER if either pointer is null.
    ErrorType getVoxelSize(double* x, double* y)
    {
        if (x == nullptr || y == nullptr) {
            return ERR_NULL_POINTER;
        }
        *x = voxelSizeX;
        *y = voxelSizeY;
        return SUCCESS;
    }

    /// The spacing by value.
    VoxelSize getVoxelSize() { return VoxelSize(voxelSizeX, voxelSizeY, voxelSizeZ); }
    /// @}

    /// @name Extents, element type and buffer
    /// Each member only reads the image and never fails. O(1).
    /// @{
    unsigned int getWidth() const { return width; }        ///< voxels along x
    unsigned int getHeight() const { return height; }      ///< voxels along y
    unsigned int getDepth() const { return depth; }        ///< voxels along z
    unsigned int getChannels() const { return channels; }  ///< values per voxel
    /// All four extents.
    ImageSize getImageSize() { return ImageSize(width, height, depth, channels); }

    /// The tag of T, in every state of the image.
    DataType getDataType() { return detail::tagOf<T>(); }

    /// The first element, or null. Writing through the pointer modifies the image.
    T* getBufferPointer() { return buffer; }
    /// The same; not a const T*, because the type is part of the interface.
    T* getBufferPointer() const { return buffer; }
    /// @}

    /// @name Voxels at whole positions
    /// Indices are compared with the extents as unsigned numbers: a negative index arrives as a
    /// huge one and fails the same comparison. O(1).
    /// @{

    /// The element, untested: out of bounds, or without a buffer, the behaviour is undefined.
    const T& operator()(int x, int y, int z, int c) const
    {
        return buffer[detail::elements(strideX, x) + detail::elements(strideY, y) +
                      detail::elements(strideZ, z) + detail::elements(strideC, c)];
    }
    T& operator()(int x, int y, int z, int c)
    {
        return const_cast<T&>(static_cast<const VxImage&>(*this)(x, y, z, c));
    }

    /// Channel 0 of voxel (x, y, 0), or 0 out of bounds. The channel count is not tested.
    T getValueVoxel(int x, int y) const { return getValueVoxel(x, y, 0); }

    /// Channel 0 of voxel (x, y, z), or 0 out of bounds. The channel count is not tested.
    T getValueVoxel(int x, int y, int z) const
    {
        return isInside(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                        static_cast<unsigned int>(z))
                   ? (*this)(x, y, z, 0)
                   : T();
    }

    /// Channel c of voxel (x, y, z), or 0 out of bounds.
    T getValueVoxel(int x, int y, int z, int c) const
    {
        return isInside(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                        static_cast<unsigned int>(z), static_cast<unsigned int>(c))
                   ? (*this)(x, y, z, c)
                   : T();
    }

    /// Stores `value`; modifies the image, on one thread at a time.
    /// @return ERR_INVALID_ARGUMENT out of bounds, for the channel too.
    ErrorType setValueVoxel(int x, int y, int z, int c, T value)
    {
        if (!isInside(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                      static_cast<unsigned int>(z), static_cast<unsigned int>(c))) {
            return ERR_INVALID_ARGUMENT;
        }
        (*this)(x, y, z, c) = value;
        return SUCCESS;
    }

    /// Whether channel c of voxel (x, y, z) exists; compares signed numbers.
    bool hasVoxel(int x, int y, int z, int c) const
    {
        return x >= 0 && x < static_cast<int>(width) && y >= 0 && y < static_cast<int>(height) &&
               z >= 0 && z < static_cast<int>(depth) && c >= 0 && c < static_cast<int>(channels);
    }
    /// @}

    /// @name Whole volumes
    /// Each visits its voxels through the strides: z outermost, then y, x and the channel. That
    /// order decides the result where voxels share elements or images overlap. O(voxels). The image
    /// that is written is used by one thread at a time; the other one is only read.
    /// @{

    /// Sets every value. @return always SUCCESS, for an Empty image too.
    ErrorType fill(T value);
    /// Sets one channel of every voxel.
    /// @return ERR_INVALID_CHANNEL, unlike setValueVoxel(): callers compare the codes.
    ErrorType fill(unsigned int channel, T value);

    /// Copies a box, in voxels, and the spacing into the Empty image `out`. Clips the ends of the
    /// box to the volume, not its starts.
    /// @return ERR_INVALID_ARGUMENT for a null `out` (not ERR_NULL_POINTER as in the plane
    ///         functions: callers compare the codes), for an empty range and for a box outside the
    ///         volume; the codes of initialize(). The size is computed in 32 bits: a box that
    ///         starts some 2^32 voxels beyond the volume wraps to a valid size, and `out` is all 0.
    /// @throws base::Exception if `out` has a buffer.
    ErrorType crop(const Rect& box, VxImage* out);

    /// Pastes `src` with its voxel (0, 0, 0) at voxel (x, y, z) and clips it at the far ends. There
    /// is no guard against drawing an image onto itself.
    /// @return ERR_INVALID_CHANNEL if the channel counts differ; otherwise ERR_INVALID_ARGUMENT for
    ///         a position out of bounds or an image without channels.
    ErrorType draw(const VxImage& src, unsigned int x, unsigned int y, unsigned int z);
    /// @}

    /// @name Sampling at fractional positions
    ///
    /// getValueVoxel() takes a position in voxels, with voxel centres at whole numbers.
    /// getValueReal() and getDoubleValueReal() take one in world units and divide it by the
    /// spacing. The interpolator is NearestNeighbor, Linear or Cubic by value, or any by its
    /// address. The border is Constant or Replication by value, or any by its address. `value` is
    /// what Constant reads outside the image; forms without a border read 0 there. The channel is
    /// never tested: one out of bounds reads another element, or outside the buffer.
    ///
    /// A result of type T is **rounded half away from zero for every T, float and double too**, and
    /// for nearest neighbour. Two forms do not round: getDoubleValueReal() returns the kernel's
    /// double as it is; getValueVoxel() without a border truncates for an integer T and keeps the
    /// fraction of a float or double. Then an integer T wraps; nothing saturates. A double that
    /// does not fit 64 bits gives 0 (unsigned types); one that does not fit int gives INT_MIN (int)
    /// or 0 (short).
    ///
    /// Errors: base::Exception from a policy that has no table of its own. Threads: each call only
    /// reads the image and the policies.
    /// @{

    /// Position in voxels, 0 outside; **not rounded**.
    template <class I>
    T getValueVoxel(double x, double y, double z, int c, I interpolator) const
        noexcept(detail::byValue<I>());
    /// The same with an interpolator chosen at run time.
    template <class I>
    T getValueVoxel(double x, double y, double z, int c, Interpolator* interpolator) const
        noexcept(detail::byAddress<I>());
    /// Position in voxels; rounded.
    template <class I, class B>
    T getValueVoxel(double x, double y, double z, int c, I interpolator, B border, T value) const
        noexcept(detail::byValue<I, B>());
    /// The same with an interpolator chosen at run time.
    template <class I, class B>
    T getValueVoxel(double x, double y, double z, int c, Interpolator* interpolator, B border,
                    T value) const noexcept(detail::byAddress<I, B>());

    /// Position in physical units, 0 outside; rounded.
    template <class I>
    T getValueReal(double x, double y, double z, int c, I interpolator) const
        noexcept(detail::byValue<I>());
    /// Position in physical units; rounded.
    template <class I, class B>
    T getValueReal(double x, double y, double z, int c, I interpolator, B border, T value) const
        noexcept(detail::byValue<I, B>());

    /// Position in physical units, Linear, 0 outside; rounded.
    T getValueReal(double x, double y, double z, int c) const;

    /// Position in physical units, 0 outside; the kernel's double.
    template <class I>
    double getDoubleValueReal(double x, double y, double z, int c, I interpolator) const
        noexcept(detail::byValue<I>());
    /// Position in physical units; the kernel's double.
    template <class I, class B>
    double getDoubleValueReal(double x, double y, double z, int c, I interpolator, B border,
                              T value) const noexcept(detail::byValue<I, B>());
    /// The same with an interpolator chosen at run time.
    template <class I, class B>
    double getDoubleValueReal(double x, double y, double z, int c, Interpolator* interpolator,
                              B border, T value) const noexcept(detail::byAddress<I, B>());
    /// @}

#include "volux/core/detail/AddressOverloads.inc"

protected:
    // Copying is protected, for derived images alone: it is costly and can fail, and only
    // initialize(other, copyData) reports that. Here a failed allocation leaves a null buffer.

    /// Makes a deep, Owning copy of `other`, which is only read.
    VxImage(const VxImage& other);

    /// Frees an Owning image's block, then copies deeply. Self-assignment is not tested: the block
    /// goes first, because the interface is fixed, and the image then reads 0. Modifies the image.
    VxImage& operator=(const VxImage& other);

    /// The bytes that the extents describe, which is not the capacity of the block.
    std::size_t getBufferSizeBytes() const
    {
        return sizeof(T) * channels * depth * height * width;
    }

private:
    // The private members are exported too, so their names, types and values are fixed.
    static constexpr unsigned int kDefaultSize = 1;
    static constexpr unsigned int kDefaultPosition = 0;
    static constexpr double kDefaultVoxelSize = 1.0;
    static constexpr int kDefaultDimension = 3;
    static constexpr int kDefaultDimensionWithChannel = 4;

    // Points the buffer to a zeroed block; the caller must have freed the old one.
    ErrorType allocateBuffer(std::size_t bytes);
    ErrorType freeBuffer();
    ErrorType copyFrom(const VxImage& other, bool copyData);
    void setDotSequentialStride(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                                unsigned int sizeC);
    bool isValidSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                     unsigned int sizeC);

    friend struct detail::Layout<T>;

    // Compares every extent, even after one has failed, so that a loop over x compares the others
    // once.
    bool isInside(unsigned int x, unsigned int y, unsigned int z) const
    {
        const bool inWidth = x < width;
        const bool inHeight = y < height;
        const bool inDepth = z < depth;
        return inWidth && inHeight && inDepth;
    }
    bool isInside(unsigned int x, unsigned int y, unsigned int z, unsigned int c) const
    {
        const bool inChannels = c < channels;
        return isInside(x, y, z) && inChannels;
    }

    T* buffer = nullptr;
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int depth = 0;
    unsigned int channels = 0;
    std::uint64_t strideX = 0;
    std::uint64_t strideY = 0;
    std::uint64_t strideZ = 0;
    std::uint64_t strideC = 1;
    double voxelSizeX = kDefaultVoxelSize;
    double voxelSizeY = kDefaultVoxelSize;
    double voxelSizeZ = kDefaultVoxelSize;
    std::uint8_t memoryMode = 0;    // 0: the image owns the buffer; 1: the caller does
    std::uint64_t bufferBytes = 0;  // capacity of the block last allocated
};

#define VOLUX_TEMPLATE_CLASS extern template class VOLUX_CORE_API
#include "volux/core/detail/instantiations/Images.inc"

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/Sampling.inc"

#include "volux/core/detail/RunTimeSpellings.inc"

}  // namespace volux::core
