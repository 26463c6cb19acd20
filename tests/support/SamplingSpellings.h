// Every way in which a caller can write a sampling call, as a table to run through.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SamplingOracle.h"
#include "volux/core.h"

namespace volux::test {

// The arguments of a call, less the policies.
template <class T>
struct Call {
    const core::VxImage<T>& image;
    oracle::Position p;
    int channel;
    T value;
};

template <class T>
struct Spelling {
    oracle::Form form;
    oracle::Kernel kernel;
    oracle::Border border;
    std::string name;
    double (*sample)(const Call<T>&);
};

// "getValueReal<I, B>(object, object), Linear, Constant"
template <class T>
std::string nameOf(const Spelling<T>& spelling)
{
    constexpr const char* forms[] = {"getValueVoxel", "getValueReal", "getDoubleValueReal", ""};
    constexpr const char* kernels[] = {"NearestNeighbor", "Linear", "Cubic"};
    constexpr const char* borders[] = {"no border", "Constant", "Replication"};
    return forms[static_cast<int>(spelling.form)] + spelling.name + ", " +
           kernels[static_cast<int>(spelling.kernel)] + ", " +
           borders[static_cast<int>(spelling.border)];
}

// The static object of a policy class, and its name in the oracle's terms.
template <class Policy>
struct Static;

template <>
struct Static<core::NearestNeighbor> {
    static constexpr oracle::Kernel kind = oracle::Kernel::Nearest;
    static core::NearestNeighbor& object() { return core::InterpolationType::NEAREST_NEIGHBOR; }
};

template <>
struct Static<core::Linear> {
    static constexpr oracle::Kernel kind = oracle::Kernel::Linear;
    static core::Linear& object() { return core::InterpolationType::LINEAR; }
};

template <>
struct Static<core::Cubic> {
    static constexpr oracle::Kernel kind = oracle::Kernel::Cubic;
    static core::Cubic& object() { return core::InterpolationType::CUBIC; }
};

template <>
struct Static<core::Constant> {
    static constexpr oracle::Border kind = oracle::Border::Constant;
    static core::Constant& object() { return core::InterpolationBorderType::CONSTANT; }
};

template <>
struct Static<core::Replication> {
    static constexpr oracle::Border kind = oracle::Border::Replication;
    static core::Replication& object() { return core::InterpolationBorderType::REPLICATION; }
};

// The three families of members. `RunTime` and `RunTimeBordered` are the template arguments that
// go with an Interpolator*; they are not spelt alike.
struct ValueVoxel {
    static constexpr oracle::Form form = oracle::Form::ValueVoxel;
    using RunTime = core::Interpolator;
    using RunTimeBordered = core::Interpolator;

    template <class... Policies, class T, class... Arguments>
    static double spelt(const Call<T>& call, Arguments... arguments)
    {
        return static_cast<double>(call.image.template getValueVoxel<Policies...>(
            call.p.x, call.p.y, call.p.z, call.channel, arguments...));
    }

    template <class T, class... Arguments>
    static double deduced(const Call<T>& call, Arguments&&... arguments)
    {
        return static_cast<double>(call.image.getValueVoxel(
            call.p.x, call.p.y, call.p.z, call.channel, std::forward<Arguments>(arguments)...));
    }
};

struct ValueReal {
    static constexpr oracle::Form form = oracle::Form::ValueReal;
    using RunTime = core::Interpolator*;
    using RunTimeBordered = core::Interpolator*;

    template <class... Policies, class T, class... Arguments>
    static double spelt(const Call<T>& call, Arguments... arguments)
    {
        return static_cast<double>(call.image.template getValueReal<Policies...>(
            call.p.x, call.p.y, call.p.z, call.channel, arguments...));
    }

    template <class T, class... Arguments>
    static double deduced(const Call<T>& call, Arguments&&... arguments)
    {
        return static_cast<double>(call.image.getValueReal(
            call.p.x, call.p.y, call.p.z, call.channel, std::forward<Arguments>(arguments)...));
    }
};

struct DoubleValueReal {
    static constexpr oracle::Form form = oracle::Form::DoubleValueReal;
    using RunTime = core::Interpolator*;
    using RunTimeBordered = core::Interpolator;

    template <class... Policies, class T, class... Arguments>
    static double spelt(const Call<T>& call, Arguments... arguments)
    {
        return call.image.template getDoubleValueReal<Policies...>(call.p.x, call.p.y, call.p.z,
                                                                   call.channel, arguments...);
    }

    template <class T, class... Arguments>
    static double deduced(const Call<T>& call, Arguments&&... arguments)
    {
        return call.image.getDoubleValueReal(call.p.x, call.p.y, call.p.z, call.channel,
                                             std::forward<Arguments>(arguments)...);
    }
};

template <class T>
using Spellings = std::vector<Spelling<T>>;

/// All members in all spellings, and the kernels. Instantiated once, for the seven element types.
template <class T>
Spellings<T> allSpellings();

}  // namespace volux::test
