#include "Displacement.h"

#include <algorithm>

#include "FieldOfView.h"
#include "resample/vectors/Positions.h"

namespace volux::resample::detail {

namespace {

Extents extentsOf(const ResampleRegion& region)
{
    return {region.sourceWidth, region.sourceHeight, region.sourceDepth};
}

// The positions of a block that are in view, padded with zeros, and where in the block they are.
struct Seen : Block {
    std::size_t places[kBlock];

    Seen(const Block& all, const Extents& extents)
    {
        count = 0;
        for (std::size_t n = 0; n < all.count; ++n) {
            if (isInView(all.x[n], extents.x) && isInView(all.y[n], extents.y) &&
                isInView(all.z[n], extents.z)) {
                x[count] = all.x[n];
                y[count] = all.y[n];
                z[count] = all.z[n];
                places[count++] = n;
            }
        }
        for (double* const padding : {x, y, z}) {
            std::fill(padding + count, padding + count + (kRoom - kBlock), 0.0);
        }
    }
};

}  // namespace

void displace(const Displacement& displacement, Block& block)
{
    const Source& field = displacement.field;
    Block places;
    places.count = block.count;
    mapPositions(displacement.toField, block, places);
    double* const coordinates[] = {block.x, block.y, block.z};
    for (unsigned int c = 0; c < 3; ++c) {
        field.read(c, places);
        addInView(places, extentsOf(field.region), coordinates[c]);
    }
    mapPositions(displacement.toVoxels, block, block);
}

void readWhereInView(const Source& source, unsigned int c, Block& block)
{
    const Extents extents = extentsOf(source.region);
    if (!source.reading.edgeEnds || areInView(block, extents)) {
        source.read(c, block);
        return;
    }
    Seen seen(block, extents);
    source.read(c, seen);
    std::fill_n(block.readings, block.count, source.reading.outside.value);
    for (std::size_t n = 0; n < seen.count; ++n) {
        block.readings[seen.places[n]] = seen.readings[n];
    }
}

}  // namespace volux::resample::detail
