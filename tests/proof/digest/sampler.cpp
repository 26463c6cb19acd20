// Samples the corpus with as many positions in each volume as the command line says, and writes the
// results to the standard output: for each family and element type a line "BYTES FAMILY", then so
// many bytes. The same positions come first, however many there are.
#include <cstdio>
#include <vector>

#include "Corpus.h"
#include "Families.h"
#include "Rounds.h"
#include "Stream.h"
#include "support/WrappedVolume.h"
#include "volux/core.h"

namespace volux::digest {
namespace {

// The same place in physical units, as far as a multiplication hits it.
Position inPhysicalUnits(const Position& voxel, const Position& spacing)
{
    return {voxel.x * spacing.x, voxel.y * spacing.y, voxel.z * spacing.z};
}

template <class T>
struct Scene {
    test::WrappedVolume<T> wrapped;
    T value;
    std::vector<Position> positions;
};

// The spellings of a family take turns. They promise the same bits, so how many there are does not
// change a digest.
template <class T>
void sample(const Scene<T>& scene, const Family<T>& family, Stream& stream)
{
    const Volume<T>& volume = scene.wrapped.volume;
    for (std::size_t i = 0; i < scene.positions.size(); ++i) {
        const Position p = family.isPhysical() ? inPhysicalUnits(scene.positions[i], volume.spacing)
                                               : scene.positions[i];
        const int channel = static_cast<int>(i % volume.channels);
        const Call<T> call{scene.wrapped.image, p, channel, scene.value};
        append(stream, family.spellings[i % family.spellings.size()](call));
    }
}

// Whatever moves whole voxels, out of the volume and back into it.
template <class T>
void move(core::VxImage<T>& image, T value, Stream& stream)
{
    const unsigned int x = image.getWidth() / 2;
    const unsigned int y = image.getHeight() / 2;
    const unsigned int z = image.getDepth() / 2;
    core::VxImage<T> part;
    core::VxImage<T> xy;
    core::VxImage<T> yz;
    core::VxImage<T> zx;
    image.crop(core::Rect(0, x, 0, y, 0, z), &part);
    core::getXyPlane(z, image, &xy);
    core::getYzPlane(x, image, &yz);
    core::getZxPlane(y, image, &zx);
    for (const core::VxImage<T>* taken : {&part, &xy, &yz, &zx})
        append(stream, *taken);
    image.draw(part, x, y, z);
    core::setXyPlane(0, xy, &image);
    core::setYzPlane(0, yz, &image);
    core::setZxPlane(0, zx, &image);
    append(stream, image);
    image.fill(image.getChannels() - 1, value);
    append(stream, image);
}

template <class T>
void addScene(unsigned int index, unsigned int positions, const Families<T>& families,
              Streams& streams)
{
    const auto type = static_cast<unsigned int>(core::VxImage<T>().getDataType());
    Generator random(type * kScenes + index);
    Scene<T> scene{
        test::WrappedVolume<T>(volume<T>(index, random)), outsideValue<T>(index, random), {}};
    for (unsigned int i = 0; i < positions; ++i)
        scene.positions.push_back(position(random, scene.wrapped.volume.extents));
    for (const auto& [name, family] : families)
        sample(scene, family, streams[name]);
    move(scene.wrapped.image, scene.value, streams["crop, draw, fill and planes"]);
}

template <class T>
void digest(unsigned int positions)
{
    const Families<T> families = allFamilies<T>();
    Streams streams;
    for (unsigned int scene = 0; scene < kScenes; ++scene)
        addScene(scene, positions, families, streams);
    write(streams);
}

}  // namespace
}  // namespace volux::digest

int main(int count, char** arguments)
{
    return volux::digest::digestRounds(
        count, arguments, "digest_sampler POSITIONS", [](unsigned int positions) {
            volux::test::forEachElementType(
                [=](auto zero) { volux::digest::digest<decltype(zero)>(positions); });
            return std::fflush(stdout) == 0;
        });
}
