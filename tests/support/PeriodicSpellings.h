// Calls through a border of the user's own, which is no static object, and their oracle.
#pragma once

#include <cstdint>

#include "OwnPolicies.h"
#include "SamplingSpellings.h"

namespace volux::test {

template <class T, class Family, class I>
void addPeriodic(Spellings<T>& all)
{
    static PeriodicBorder border;
    const auto add = [&](const char* name, double (*sample)(const Call<T>&)) {
        all.push_back({Family::form, Static<I>::kind, oracle::Border::None, name, sample});
    };
    add("(object, &own)", [](const Call<T>& call) {
        return Family::deduced(call, Static<I>::object(), &border, call.value);
    });
    add("(&object, &own)", [](const Call<T>& call) {
        return Family::deduced(call, &Static<I>::object(), &border, call.value);
    });
}

template <class T, class Family>
void addPeriodicForEachKernel(Spellings<T>& all)
{
    addPeriodic<T, Family, NearestNeighbor>(all);
    addPeriodic<T, Family, Linear>(all);
    addPeriodic<T, Family, Cubic>(all);
}

template <class T>
Spellings<T> periodicSpellings()
{
    Spellings<T> all;
    addPeriodicForEachKernel<T, ValueVoxel>(all);
    addPeriodicForEachKernel<T, ValueReal>(all);
    addPeriodicForEachKernel<T, DoubleValueReal>(all);
    return all;
}

template <class T>
struct PeriodicOutside {
    static std::int64_t wrapped(std::int64_t index, std::int64_t period)
    {
        return ((index % period) + period) % period;
    }
    T operator()(const Volume<T>& volume, std::int64_t x, std::int64_t y, std::int64_t z,
                 std::int64_t c) const
    {
        const Extents& e = volume.extents;
        return volume.at(wrapped(x, e.width), wrapped(y, e.height), wrapped(z, e.depth), c);
    }
};

struct PeriodicOracle {
    template <class T>
    static double interpolate(const Volume<T>& volume, const oracle::Request<T>& request)
    {
        return oracle::interpolateWith(volume, request, PeriodicOutside<T>{});
    }

    template <class T>
    static double finish(oracle::Request<T> request, double result)
    {
        // A bordered form: it rounds, whatever the table calls its border.
        request.border = oracle::Border::Replication;
        return oracle::finish(request, result);
    }
};

}  // namespace volux::test
