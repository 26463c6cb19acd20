#include "resample/calls/PoliciesWithoutRtti.h"

namespace volux::test {
namespace {

struct Ramp : core::Interpolator {
    template <class T, class B>
    double operator()(const core::VxImage<T>&, double x, double, double z, unsigned int, B, T)
    {
        return 1000.0 * x + z;
    }

    core::Interpolator::interpolator_t<core::Interpolator, core::Interpolator::Empty>& get()
        override
    {
        static core::Interpolator::interpolator_t<Ramp, core::Interpolator> table;
        return table;
    }
};

struct LinearAsItIs : core::Linear {};

struct Slope : core::Border {
    template <class T>
    T fetch(const core::VxImage<T>&, int x, int, int, unsigned int, T value, unsigned int,
            unsigned int, unsigned int)
    {
        return static_cast<T>(value - static_cast<T>(x));
    }

    core::Border::border_t<core::Border, core::Border::Empty>& get() override
    {
        static core::Border::border_t<Slope, core::Border> table;
        return table;
    }
};

}  // namespace

core::Interpolator* interpolatorWithoutRtti()
{
    static Ramp ramp;
    return &ramp;
}

core::Interpolator* linearWithoutRtti()
{
    static LinearAsItIs linear;
    return &linear;
}

core::Border* borderWithoutRtti()
{
    static Slope slope;
    return &slope;
}

}  // namespace volux::test
