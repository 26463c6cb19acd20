#include "Task.h"

#include "resample/vectors/Labels.h"

namespace volux::resample::detail {

namespace {

// One axis of an image that is a brick of a source of `extent` voxels, beginning with `first`.
Axis axisOf(unsigned int extent, unsigned int first, unsigned int held, std::int64_t stride)
{
    return {static_cast<int>(extent), static_cast<int>(first), static_cast<int>(first + held - 1),
            stride};
}

}  // namespace

ResampleRegion wholeOf(const VoxelLayout& source)
{
    ResampleRegion region;
    region.sourceWidth = source.width;
    region.sourceHeight = source.height;
    region.sourceDepth = source.depth;
    return region;
}

Channel Source::channel(unsigned int c) const
{
    Channel channel = {image.type,
                       image.at(0, 0, 0, c),
                       axisOf(region.sourceWidth, region.brickX, image.width, image.strideX),
                       axisOf(region.sourceHeight, region.brickY, image.height, image.strideY),
                       axisOf(region.sourceDepth, region.brickZ, image.depth, image.strideZ),
                       image.elementBytes};
    channel.span += channel.x.span() + channel.y.span() + channel.z.span();
    return channel;
}

void Source::read(unsigned int c, Block& block) const
{
    if (!reading.isOwn) {
        return reading.isLabels ? readLabelBlock(channel(c), reading.outside, block)
                                : readBlock(channel(c), reading.kernel, reading.outside, block);
    }
    for (std::size_t n = 0; n < block.count; ++n) {
        block.readings[n] = own(block.x[n], block.y[n], block.z[n], static_cast<int>(c));
    }
}

}  // namespace volux::resample::detail
