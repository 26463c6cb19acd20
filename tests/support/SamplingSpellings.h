// Every way in which a caller can write a sampling call, as a table to run through.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Names.h"
#include "SamplingOracle.h"

namespace volux::test {

// The arguments of a call, less the policies.
template <class T>
struct Call {
    const VxImage<T>& image;
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
    const std::string border = spelling.border == oracle::Border::None
                                   ? "no border"
                                   : kBorderNames[static_cast<std::size_t>(spelling.border) - 1];
    return forms[static_cast<int>(spelling.form)] + spelling.name + ", " +
           kKernelNames[static_cast<std::size_t>(spelling.kernel)] + ", " + border;
}

// The static object of a policy class, and its name in the oracle's terms.
template <class Policy>
struct Static;

template <>
struct Static<NearestNeighbor> {
    static constexpr oracle::Kernel kind = oracle::Kernel::Nearest;
    static NearestNeighbor& object() { return NEAREST_NEIGHBOR; }
};

template <>
struct Static<Linear> {
    static constexpr oracle::Kernel kind = oracle::Kernel::Linear;
    static Linear& object() { return LINEAR; }
};

template <>
struct Static<Cubic> {
    static constexpr oracle::Kernel kind = oracle::Kernel::Cubic;
    static Cubic& object() { return CUBIC; }
};

template <>
struct Static<Constant> {
    static constexpr oracle::Border kind = oracle::Border::Constant;
    static Constant& object() { return CONSTANT; }
};

template <>
struct Static<Replication> {
    static constexpr oracle::Border kind = oracle::Border::Replication;
    static Replication& object() { return REPLICATION; }
};

// The three families of members. `RunTime` and `RunTimeBordered` are the template arguments that
// go with an Interpolator*; they are not spelt alike.
struct ValueVoxel {
    static constexpr oracle::Form form = oracle::Form::ValueVoxel;
    using RunTime = Interpolator;
    using RunTimeBordered = Interpolator;

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
    using RunTime = Interpolator*;
    using RunTimeBordered = Interpolator*;

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
    using RunTime = Interpolator*;
    using RunTimeBordered = Interpolator;

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
