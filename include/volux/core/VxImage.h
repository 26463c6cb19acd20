/// @file
/// The container: a volume of voxels, how it gets and gives back storage, and how it is read.
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

// Both as signed numbers of 64 bits, so that a negative index counts backwards. The stride is read
// as one, not converted: g++ then sees that it may be 1, and vectorises loops over x for that.
inline std::int64_t elements(const std::uint64_t& stride, int index)
{
    return reinterpret_cast<const std::int64_t&>(stride) * index;
}

}  // namespace detail

/// A volume of width x height x depth voxels, each with one or more channels of type T.
///
/// Channel c of voxel (x, y, z) is element strideX*x + strideY*y + strideZ*z + strideC*c of the
/// buffer. Sizing an image lays it out with the channels interleaved (strides channels,
/// width*channels, width*height*channels and 1); copies take the strides of their source.
///
/// An image is in one of three states:
/// - Empty: no buffer. So is a new image, and any image after terminate().
/// - Owning: a zero-filled block of the heap (calloc), which the image frees.
/// - Wrapping: a block of the caller's, which the image never frees or resizes.
///
/// T is unsigned char, short, unsigned short, int, unsigned int, float or double.
///
/// Errors: results are an ErrorType, and a failure has changed nothing unless the member says
/// otherwise. Misuse of the lifecycle throws base::Exception, whose texts are fixed.
///
/// Threads: any number may read an image that nobody modifies; one thread at a time modifies it.
/// Nothing is locked.
template <class T>
class VOLUX_CORE_API VxImage {
    static_assert(detail::isElementType<T>,
                  "volux::core::VxImage holds unsigned char, short, unsigned short, int, "
                  "unsigned int, float or double.");

public:
    /// An Empty image: extents 0, spacing 1.0 per axis.
    VxImage();

    /// Frees what the image owns.
    ~VxImage();

    /// @name Storage
    /// @{

    /// Makes an Empty image Owning, with every value 0. O(1) apart from the allocation.
    /// @return the codes of setImageSize().
    /// @throws base::Exception if the image holds a buffer.
    ErrorType initialize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                         unsigned int sizeC);

    /// Makes an Empty image an Owning copy of another: its extents, strides and spacing, and its
    /// values, or zeros if not `copyData`. O(bytes).
    /// @return ERR_ALLOCATION_FAILED: the geometry is copied already, the buffer is null.
    /// @throws base::Exception if the image holds a buffer.
    ErrorType initialize(const VxImage& other, bool copyData);

    /// Makes an Empty image Wrapping: `data` holds sizeX*sizeY*sizeZ*sizeC elements, interleaved,
    /// and outlives the image's use of it. The spacing stays. O(1).
    /// @return ERR_NULL_POINTER, then ERR_INVALID_ARGUMENT for an extent that is 0 or above 2^31-1,
    ///         or for more bytes than 64 bits count.
    /// @throws base::Exception if the image holds a buffer; tested before the arguments.
    ErrorType initializeWithPointer(T* data, unsigned int sizeX, unsigned int sizeY,
                                    unsigned int sizeZ, unsigned int sizeC);

    /// Returns to Empty and to the defaults of a new image.
    void terminate();

    /// Resizes an Empty or Owning image and lays it out interleaved; the spacing stays.
    ///
    /// A block that is large enough is kept as it is, so old values show through the new strides;
    /// otherwise the image gets a fresh block of zeros. Only the capacity is compared: after an
    /// allocation has failed, a size that the lost block could hold succeeds without a buffer.
    /// @return ERR_INVALID_ARGUMENT as for initializeWithPointer(); ERR_ALLOCATION_FAILED: extents
    ///         and strides are new already, the buffer is null.
    /// @throws base::Exception if the image is Wrapping.
    ErrorType setImageSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                           unsigned int sizeC);
    ErrorType setImageSize(const ImageSize& size);  ///< the same, by value type

    /// Copies `bytes` bytes from `data` to the buffer in one run, without regard to strides.
    /// Neither pointer is tested.
    /// @return ERR_INVALID_ARGUMENT unless `bytes` is the image's size in bytes.
    ErrorType setImageData(const void* data, std::size_t bytes);

    /// Lays the buffer out anew, in elements; nothing is tested or moved. The x stride comes last,
    /// deliberately: the order is part of the interface. A copy takes these strides, but its block
    /// has room for width*height*depth*channels elements only.
    void setImageStride(unsigned int newStrideY, unsigned int newStrideZ, unsigned int newStrideC,
                        unsigned int newStrideX);
    /// @}

    /// @name Spacing, in physical units per voxel
    /// @{

    /// Sets the spacing.
    /// @return ERR_INVALID_ARGUMENT for a spacing that compares at or below zero. NaN does not, and
    ///         is taken.
    ErrorType setVoxelSize(double x, double y, double z);
    ErrorType setVoxelSize(const VoxelSize& size);  ///< the same, by value type

    // Not const, nor are getImageSize and getDataType: constness is part of the exported names.

    /// Gives the spacing. @return ERR_NULL_POINTER if any pointer is null; nothing is written then.
    ErrorType getVoxelSize(double* x, double* y, double* z)
    {
        if (z == nullptr || getVoxelSize(x, y) != SUCCESS) {
            return ERR_NULL_POINTER;
        }
        *z = voxelSizeZ;
        return SUCCESS;
    }

    /// The two-dimensional form.
    ErrorType getVoxelSize(double* x, double* y)
    {
        if (x == nullptr || y == nullptr) {
            return ERR_NULL_POINTER;
        }
        *x = voxelSizeX;
        *y = voxelSizeY;
        return SUCCESS;
    }

    /// By value.
    VoxelSize getVoxelSize() { return VoxelSize(voxelSizeX, voxelSizeY, voxelSizeZ); }
    /// @}

    /// @name Extents, element type and buffer
    /// @{
    unsigned int getWidth() const { return width; }        ///< voxels along x
    unsigned int getHeight() const { return height; }      ///< voxels along y
    unsigned int getDepth() const { return depth; }        ///< voxels along z
    unsigned int getChannels() const { return channels; }  ///< values per voxel
    /// All four extents.
    ImageSize getImageSize() { return ImageSize(width, height, depth, channels); }

    /// The tag of T, whatever the image's state.
    DataType getDataType() { return detail::tagOf<T>; }

    /// The first element, or null. The const form gives a T* too, deliberately.
    T* getBufferPointer() { return buffer; }
    /// The same.
    T* getBufferPointer() const { return buffer; }
    /// @}

    /// @name Voxels at whole positions
    /// Indices are compared with the extents as unsigned numbers: a negative index arrives as a
    /// huge one and fails the same comparison. O(1).
    /// @{

    /// The element, untested: outside the image, or without a buffer, the behaviour is undefined.
    const T& operator()(int x, int y, int z, int c) const
    {
        return buffer[detail::elements(strideX, x) + detail::elements(strideY, y) +
                      detail::elements(strideZ, z) + detail::elements(strideC, c)];
    }
    T& operator()(int x, int y, int z, int c)
    {
        return const_cast<T&>(static_cast<const VxImage&>(*this)(x, y, z, c));
    }

    /// Channel 0 of voxel (x, y, 0), or 0 outside. The channel count is not tested.
    T getValueVoxel(int x, int y) const { return getValueVoxel(x, y, 0); }

    /// Channel 0 of voxel (x, y, z), or 0 outside. The channel count is not tested.
    T getValueVoxel(int x, int y, int z) const
    {
        return isInside(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                        static_cast<unsigned int>(z))
                   ? (*this)(x, y, z, 0)
                   : T();
    }

    /// Channel c of voxel (x, y, z), or 0 outside.
    T getValueVoxel(int x, int y, int z, int c) const
    {
        return isInside(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                        static_cast<unsigned int>(z), static_cast<unsigned int>(c))
                   ? (*this)(x, y, z, c)
                   : T();
    }

    /// Stores one value. @return ERR_INVALID_ARGUMENT outside, also for the channel.
    ErrorType setValueVoxel(int x, int y, int z, int c, T value)
    {
        if (!isInside(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                      static_cast<unsigned int>(z), static_cast<unsigned int>(c))) {
            return ERR_INVALID_ARGUMENT;
        }
        (*this)(x, y, z, c) = value;
        return SUCCESS;
    }

    /// Whether channel c of voxel (x, y, z) exists; compares as signed numbers.
    bool hasVoxel(int x, int y, int z, int c) const
    {
        return x >= 0 && x < static_cast<int>(width) && y >= 0 && y < static_cast<int>(height) &&
               z >= 0 && z < static_cast<int>(depth) && c >= 0 && c < static_cast<int>(channels);
    }
    /// @}

    /// @name Whole volumes
    /// Every element is reached through the strides, z outermost, then y, x and the channel.
    /// O(voxels).
    /// @{

    /// Sets every value. @return always SUCCESS, also for an Empty image.
    ErrorType fill(T value);
    /// Sets one channel. @return ERR_INVALID_CHANNEL, unlike setValueVoxel().
    ErrorType fill(unsigned int channel, T value);

    /// Copies a box into the Empty image `out`, with the spacing. The ends of the box are clipped
    /// to the volume, its begins are not.
    /// @return ERR_INVALID_ARGUMENT for a null `out` (deliberately not ERR_NULL_POINTER, unlike the
    ///         plane functions), an empty range or a box outside the volume; the codes of
    ///         initialize(). A box that begins some 2^32 voxels beyond the volume wraps to a size
    ///         that is taken, and `out` is all 0.
    /// @throws base::Exception if `out` holds a buffer.
    ErrorType crop(const Rect& box, VxImage* out);

    /// Pastes `src` with its voxel (0, 0, 0) at (x, y, z), clipped at the far ends. Drawing an
    /// image onto itself is not guarded against.
    /// @return ERR_INVALID_CHANNEL if the channel counts differ, else ERR_INVALID_ARGUMENT for a
    ///         position outside the volume or for no channels.
    ErrorType draw(const VxImage& src, unsigned int x, unsigned int y, unsigned int z);
    /// @}

    /// @name Sampling at fractional positions
    ///
    /// getValueVoxel takes positions in voxels (centres at whole numbers), getValueReal and
    /// getDoubleValueReal in physical units, which they divide by the spacing; there is no origin.
    /// The interpolator is NearestNeighbor, Linear or Cubic by value, or any by its address; the
    /// border is Constant or Replication by value, or any by its address. `value` is what Constant
    /// reads outside. Forms without a border read 0 outside. A channel is never tested.
    ///
    /// A result that becomes a T is **rounded half away from zero for every T, float and double
    /// too**, nearest neighbour included: those are whole numbers. Two forms are not rounded:
    /// getDoubleValueReal gives the kernel's double as it is; getValueVoxel without a border
    /// truncates for an integer T and keeps the fraction of a float or double. An integer T then
    /// wraps; nothing saturates. A double that fits no 64-bit integer gives 0 (unsigned types), one
    /// that fits no int gives INT_MIN (int) or 0 (short).
    /// @{

    /// In voxels, 0 outside; **not rounded**.
    template <class I>
    T getValueVoxel(double x, double y, double z, int c, I interpolator) const
        noexcept(detail::byValue<I>());
    /// The same at run time.
    template <class I>
    T getValueVoxel(double x, double y, double z, int c, Interpolator* interpolator) const
        noexcept(detail::byAddress<I>());
    /// In voxels, rounded.
    template <class I, class B>
    T getValueVoxel(double x, double y, double z, int c, I interpolator, B border, T value) const
        noexcept(detail::byValue<I, B>());
    /// The same at run time.
    template <class I, class B>
    T getValueVoxel(double x, double y, double z, int c, Interpolator* interpolator, B border,
                    T value) const noexcept(detail::byAddress<I, B>());

    /// In physical units, 0 outside; rounded.
    template <class I>
    T getValueReal(double x, double y, double z, int c, I interpolator) const
        noexcept(detail::byValue<I>());
    /// In physical units, rounded.
    template <class I, class B>
    T getValueReal(double x, double y, double z, int c, I interpolator, B border, T value) const
        noexcept(detail::byValue<I, B>());

    /// In physical units, Linear, 0 outside; rounded.
    T getValueReal(double x, double y, double z, int c) const;

    /// In physical units, 0 outside; the kernel's double.
    template <class I>
    double getDoubleValueReal(double x, double y, double z, int c, I interpolator) const
        noexcept(detail::byValue<I>());
    /// In physical units; the kernel's double.
    template <class I, class B>
    double getDoubleValueReal(double x, double y, double z, int c, I interpolator, B border,
                              T value) const noexcept(detail::byValue<I, B>());
    /// The same at run time.
    template <class I, class B>
    double getDoubleValueReal(double x, double y, double z, int c, Interpolator* interpolator,
                              B border, T value) const noexcept(detail::byAddress<I, B>());
    /// @}

#include "volux/core/detail/AddressOverloads.inc"

protected:
    // Copying a volume is costly and can fail; initialize(other, copyData) reports that. Kept for
    // derived images. Both discard the code: after a failed allocation the buffer is null.

    /// A deep, Owning copy.
    VxImage(const VxImage& other);

    /// Frees what the image owns, then copies deeply. There is deliberately no test for
    /// self-assignment: the block goes first, so an image assigned to itself reads 0.
    VxImage& operator=(const VxImage& other);

    /// Bytes that the extents describe; not the capacity of the block.
    std::size_t getBufferSizeBytes() const
    {
        return sizeof(T) * channels * depth * height * width;
    }

private:
    // Members of the exported interface all the same, so their names and values are fixed.
    static constexpr unsigned int kDefaultSize = 1;
    static constexpr unsigned int kDefaultPosition = 0;
    static constexpr double kDefaultVoxelSize = 1.0;
    static constexpr int kDefaultDimension = 3;
    static constexpr int kDefaultDimensionWithChannel = 4;

    // Replaces the buffer pointer by a zeroed block; the caller frees the old one first.
    ErrorType allocateBuffer(std::size_t bytes);
    ErrorType freeBuffer();
    ErrorType copyFrom(const VxImage& other, bool copyData);
    void setDotSequentialStride(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                                unsigned int sizeC);
    bool isValidSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                     unsigned int sizeC);

    friend struct detail::Layout<T>;

    // All are compared, also behind one that fails: a loop over x compares the others once.
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
    std::uint8_t memoryMode = 0;    // 0: the buffer is the image's own; 1: the caller's
    std::uint64_t bufferBytes = 0;  // capacity of the block last allocated
};

#define VOLUX_TEMPLATE_CLASS extern template class VOLUX_CORE_API
#include "volux/core/detail/instantiations/Images.inc"

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/Sampling.inc"

#include "volux/core/detail/RunTimeSpellings.inc"

}  // namespace volux::core
