// What a reading becomes in each element type and by each form of a call.

#include <limits>

#include "Tables.h"
#include "volux/core.h"

namespace documents {

namespace {

using namespace volux::core;
using InterpolationBorderType::CONSTANT;
using InterpolationType::LINEAR;
using InterpolationType::NEAREST_NEIGHBOR;

/// An interpolator that reads the same everywhere.
struct Reading : Interpolator {
    double reading;

    explicit Reading(double value) : reading(value) {}

    template <class T, class B>
    double operator()(const VxImage<T>&, double, double, double, unsigned int, B, T)
    {
        return reading;
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override
    {
        static interpolator_t<Reading, Interpolator> table;
        return table;
    }
};

/// Both take the element type from the type of their first argument, a zero.
constexpr auto kRounded = [](auto zero, Reading& reading) {
    return spell(VxImage<decltype(zero)>().getValueVoxel(0, 0, 0, 0, &reading, CONSTANT, zero));
};
constexpr auto kTruncated = [](auto zero, Reading& reading) {
    return spell(VxImage<decltype(zero)>().getValueVoxel(0, 0, 0, 0, &reading));
};

std::vector<Named> values()
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return {{"0.49999999999999994", 0.49999999999999994},
            {"0.5", 0.5},
            {"2.5", 2.5},
            {"-0.3", -0.3},
            {"-0.5", -0.5},
            {"-0.6", -0.6},
            {"-1", -1},
            {"-2.5", -2.5},
            {"255.5", 255.5},
            {"300", 300},
            {"32767.5", 32767.5},
            {"65535.5", 65535.5},
            {"2147483647.4", 2147483647.4},
            {"2147483647.5", 2147483647.5},
            {"3e9", 3e9},
            {"-2147483648.4", -2147483648.4},
            {"-3e9", -3e9},
            {"4294967295.5", 4294967295.5},
            {"1e12 + 7", 1e12 + 7},
            {"9223372036854774784", 9223372036854774784.0},
            {"9223372036854775808", 9223372036854775808.0},
            {"1e300", 1e300},
            {"infinity", kInfinity},
            {"-infinity", -kInfinity},
            {"NaN", std::numeric_limits<double>::quiet_NaN()}};
}

template <class... T, class Convert>
std::string typesTable(Convert convert)
{
    Table table;
    table.row({"reading", "unsigned char", "short", "unsigned short", "int", "unsigned int",
               "float", "double"});
    for (const Named& each : values()) {
        Reading reading(each.value);
        table.row({each.name, convert(T(), reading)...});
    }
    return table.text();
}

template <class Convert>
std::string allTypesTable(Convert convert)
{
    return typesTable<unsigned char, short, unsigned short, int, unsigned int, float, double>(
        convert);
}

/// What every form of a call makes of one voxel of a float image.
struct Forms {
    VxImage<float> image;

    explicit Forms(float voxel)
    {
        image.initialize(2, 1, 1, 1);
        image.fill(voxel);
    }

    std::string plain() const { return spell(image.getValueVoxel(0, 0, 0, 0)); }

    template <class Kernel>
    std::string voxel(Kernel kernel) const
    {
        return spell(image.getValueVoxel(0.0, 0.0, 0.0, 0, kernel));
    }

    template <class Kernel>
    std::string borderedVoxel(Kernel kernel) const
    {
        return spell(image.getValueVoxel(0, 0, 0, 0, kernel, CONSTANT, 0));
    }

    template <class Kernel>
    std::string real(Kernel kernel) const
    {
        return spell(image.getValueReal(0, 0, 0, 0, kernel));
    }

    template <class Kernel>
    std::string doubleReal(Kernel kernel) const
    {
        return spell(image.getDoubleValueReal(0, 0, 0, 0, kernel));
    }
};

template <class Kernel>
void addForms(Table& table, const std::string& name, Kernel kernel, const Forms& a, const Forms& b)
{
    table.row({"`getValueVoxel`, " + name + ", no border", a.voxel(kernel), b.voxel(kernel)});
    table.row({"`getValueVoxel`, " + name + ", any border", a.borderedVoxel(kernel),
               b.borderedVoxel(kernel)});
    table.row({"`getValueReal`, " + name, a.real(kernel), b.real(kernel)});
    table.row({"`getDoubleValueReal`, " + name, a.doubleReal(kernel), b.doubleReal(kernel)});
}

}  // namespace

std::string formTable()
{
    const Forms a(2.75F);
    const Forms b(-0.25F);
    Table table;
    table.row({"call, at the voxel itself", "voxel 2.75", "voxel -0.25"});
    table.row({"`getValueVoxel` with integers", a.plain(), b.plain()});
    addForms(table, "nearest", NEAREST_NEIGHBOR, a, b);
    addForms(table, "linear", LINEAR, a, b);
    return table.text();
}

std::string roundedTable()
{
    return allTypesTable(kRounded);
}

std::string truncatedTable()
{
    return allTypesTable(kTruncated);
}

}  // namespace documents
