// Answers the corpus on whole volumes by the Python package: each call becomes a request, which
// python_answers.py reads from the standard output and answers on the standard input. A request is
// a line "? OPERATION NAME=NUMBER,... NAME=@BYTES ..." and then those bytes; the answer is as many
// doubles as the request asks for.
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "Arranged.h"
#include "BulkCorpus.h"
#include "Rounds.h"

namespace volux::digest {
namespace {

// In the order of an image: x fastest after the channels.
template <class T>
std::vector<T> elementsOf(const View<const T>& view)
{
    std::vector<T> elements;
    test::forEachElement(view,
                         [&](auto... at) { elements.push_back(test::elementOf(view, at...)); });
    return elements;
}

class Request {
public:
    explicit Request(const std::string& operation) : line_("? " + operation) {}

    Request& numbers(const std::string& name, const std::vector<double>& values)
    {
        line_ += " " + name + "=";
        for (const double value : values) {
            char text[40];
            std::snprintf(text, sizeof text, "%a,", value);
            line_ += text;
        }
        line_.pop_back();
        return *this;
    }

    template <class T>
    Request& bytes(const std::string& name, const std::vector<T>& values)
    {
        const std::size_t size = values.size() * sizeof(T);
        line_ += " " + name + "=@" + std::to_string(size);
        bytes_.append(reinterpret_cast<const char*>(values.data()), size);
        return *this;
    }

    Request& map(const std::string& name, const AffineMap& map)
    {
        std::vector<double> entries;
        for (const auto& row : map.rows)
            entries.insert(entries.end(), row, row + 4);
        return numbers(name, entries);
    }

    // The distances of a volume in memory.
    Request& layout(const std::string& name, core::DataType type, const VoxelLayout& l)
    {
        const auto number = [](auto value) { return static_cast<double>(value); };
        return numbers(name + "Type", {number(type)})
            .numbers(name + "Extents",
                     {number(l.width), number(l.height), number(l.depth), number(l.channels)})
            .numbers(name + "Strides",
                     {number(l.strideX), number(l.strideY), number(l.strideZ), number(l.strideC)});
    }

    template <class T>
    Request& source(const View<const T>& view)
    {
        return layout("source", view.type, view)
            .numbers("unit", {view.spacing.x, view.spacing.y, view.spacing.z})
            .bytes("source", elementsOf(view));
    }

    Request& options(const Options& o)
    {
        const auto place = [](const auto& all, auto one) {
            return static_cast<double>(std::find(all.begin(), all.end(), one) - all.begin());
        };
        const resample::Subsamples& n = o.subsamples;
        return numbers("kernel", {place(test::kInterpolators, o.interpolator)})
            .numbers("border", {place(test::kBorders, o.border)})
            .numbers("outside", {o.outside})
            .numbers("extends", {o.edgeExtends ? 1.0 : 0.0})
            .numbers("wraps", {o.overflow == resample::Overflow::WRAP ? 1.0 : 0.0})
            .numbers("subsamples", {1.0 * n.x, 1.0 * n.y, 1.0 * n.z});
    }

    Request& positions(const resample::Position* first, std::size_t count)
    {
        std::vector<double> coordinates;
        for (std::size_t n = 0; n < count; ++n)
            coordinates.insert(coordinates.end(), {first[n].x, first[n].y, first[n].z});
        return bytes("positions", coordinates);
    }

    template <class V>
    Request& warp(const Moves<V>& moves)
    {
        const View<const V> field = resample::viewOf(moves.field);
        return layout("field", field.type, field)
            .bytes("field", elementsOf(field))
            .map("toField", moves.toField)
            .map("toVoxels", moves.toVoxels);
    }

    std::vector<double> answer(std::size_t count) const
    {
        std::printf("%s\n", line_.c_str());
        std::fwrite(bytes_.data(), 1, bytes_.size(), stdout);
        std::fflush(stdout);
        std::vector<double> answered(count);
        if (std::fread(answered.data(), sizeof(double), count, stdin) != count)
            throw std::runtime_error("Python did not answer " + line_);
        return answered;
    }

private:
    std::string line_;
    std::string bytes_;
};

template <class T>
VoxelLayout layoutOf(const core::VxImage<T>& image)
{
    return resample::viewOf(image);
}

inline VoxelLayout layoutOf(const Arrangement& to, const Grid& grid, unsigned int channels)
{
    return Distances(to, {grid.width, grid.height, grid.depth, channels}, {}).layout;
}

inline std::size_t countOf(const VoxelLayout& l)
{
    return std::size_t{l.width} * l.height * l.depth * l.channels;
}

template <class R>
constexpr core::DataType kTypeOf = View<R>::type;

class PythonCalls {
public:
    template <class T>
    static void resample(const core::VxImage<T>& source, const Grid& grid,
                         core::VxImage<T>& destination, const Options& options)
    {
        fill(Request("fill").map("map", grid.map), source, destination, options);
    }

    template <class T>
    static void reslice(const core::VxImage<T>& source, const Planes& planes,
                        core::VxImage<T>& destination, const Options& options, const Slab& slab)
    {
        fill(slabs(planes, slab), source, destination, options);
    }

    template <class T>
    static void resize(const core::VxImage<T>& source, Align align, core::VxImage<T>& destination,
                       const Options& options)
    {
        fill(Request("resize").numbers("centres", {align == Align::CENTRES ? 1.0 : 0.0}), source,
             destination, options);
    }

    template <class T, class V>
    static void resample(const core::VxImage<T>& source, const Grid& grid, const Moves<V>& moves,
                         core::VxImage<T>& destination, const Options& options)
    {
        fill(Request("fill").map("map", grid.map).warp(moves), source, destination, options);
    }

    template <class T, class Result>
    static void sample(const core::VxImage<T>& source,
                       const std::vector<resample::Position>& positions, resample::Units units,
                       Result* results, const Options& options)
    {
        const Places places{positions, 1, units, nullptr};
        const View<const T> from = resample::viewOf(source);
        for (const double value : sampled<Result>(from, places, options))
            *results++ = static_cast<Result>(value);
    }

    template <class R, class T>
    static std::vector<double> resample(const ViewedVolume<T>& source, const Grid& grid,
                                        const Arrangement& to, const Options& options)
    {
        return arranged<R>(Request("fill").map("map", grid.map), source, grid, to, options);
    }

    template <class R, class T>
    static std::vector<double> reslice(const ViewedVolume<T>& source, const Planes& planes,
                                       const Arrangement& to, const Options& options,
                                       const Slab& slab)
    {
        return arranged<R>(slabs(planes, slab), source, gridOfPlanes(planes), to, options);
    }

    template <class R, class T>
    static std::vector<double> sample(const ViewedVolume<T>& source, const Places& places,
                                      const Options& options)
    {
        const ArrangedSource<T> from(source);
        return sampled<R>(View<const T>(from.view), places, options);
    }

    template <class V>
    static resample::Position lead(const Moves<V>& moves, const resample::Position& p)
    {
        const std::vector<double> led = Request("lead").warp(moves).positions(&p, 1).answer(3);
        return {led[0], led[1], led[2]};
    }

    // The first channel alone.
    template <class T>
    static std::vector<double> readings(const core::VxImage<T>& source,
                                        const std::vector<resample::Position>& positions,
                                        const Options& options)
    {
        return atPlaces("readings", source, positions, options).answer(positions.size());
    }

    template <class T>
    static std::vector<double> gradients(const core::VxImage<T>& source,
                                         const std::vector<resample::Position>& positions,
                                         const Options& options)
    {
        return atPlaces("gradients", source, positions, options).answer(4 * positions.size());
    }

private:
    static Request slabs(const Planes& planes, const Slab& slab)
    {
        return Request("reslice")
            .map("map", gridOfPlanes(planes).map)
            .numbers("planes", {1.0 * slab.planes})
            .numbers("projection", {static_cast<double>(slab.projection)});
    }

    template <class T>
    static void fill(Request request, const core::VxImage<T>& source, core::VxImage<T>& destination,
                     const Options& options)
    {
        const VoxelLayout to = layoutOf(destination);
        const std::vector<double> values = request.source(View<const T>(resample::viewOf(source)))
                                               .layout("result", kTypeOf<T>, to)
                                               .options(options)
                                               .answer(countOf(to));
        auto value = values.begin();
        test::forEachElement(to, [&](int x, int y, int z, int c) {
            destination(x, y, z, c) = static_cast<T>(*value++);
        });
    }

    template <class R, class T>
    static std::vector<double> arranged(Request request, const ViewedVolume<T>& source,
                                        const Grid& grid, const Arrangement& to,
                                        const Options& options)
    {
        const ArrangedSource<T> from(source);
        const VoxelLayout layout = layoutOf(to, grid, from.view.channels);
        return request.source(View<const T>(from.view))
            .layout("result", kTypeOf<R>, layout)
            .options(options)
            .answer(countOf(layout));
    }

    template <class R, class T>
    static std::vector<double> sampled(const View<const T>& from, const Places& places,
                                       const Options& options)
    {
        Request request("sample");
        const std::size_t count = places.positions.size();
        request.source(from)
            .options(options)
            .positions(places.positions.data(), count)
            .numbers("stride", {static_cast<double>(places.stride)})
            .numbers("physical", {places.units == resample::Units::PHYSICAL ? 1.0 : 0.0})
            .numbers("resultType", {static_cast<double>(kTypeOf<R>)});
        if (places.toVoxels != nullptr)
            request.map("map", *places.toVoxels);
        return request.answer(count * from.channels);
    }

    template <class T>
    static Request atPlaces(const std::string& operation, const core::VxImage<T>& source,
                            const std::vector<resample::Position>& positions,
                            const Options& options)
    {
        Request request(operation);
        request.source(View<const T>(resample::viewOf(source)))
            .options(options)
            .positions(positions.data(), positions.size());
        return request;
    }
};

}  // namespace
}  // namespace volux::digest

int main(int count, char** arguments)
{
    const volux::digest::PythonCalls calls;
    return volux::digest::digestRounds(
        count, arguments, "python_calls ROUNDS",
        [&](unsigned int rounds) { return volux::digest::digestBulk(rounds, calls); });
}
