// Border and interpolation policies as a user of the library would write them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <typeinfo>
#include <vector>

#include "ElementTypes.h"
#include "Names.h"

namespace volux::test {

using BorderTable = Border::border_t<Border, Border::Empty>;
using InterpolatorTable = Interpolator::interpolator_t<Interpolator, Interpolator::Empty>;

// Opens the protected get() of a policy.
template <class Policy>
struct Open : Policy {
    using Policy::get;
};

// Whether deleting a policy through its base destroys it.
template <class Policy, class Base>
bool isDestroyedThrough()
{
    struct Witness : Policy {
        explicit Witness(int& count) : count_(count) {}
        ~Witness() override { ++count_; }
        int& count_;
    };
    int destroyed = 0;
    const Base* const policy = new Witness(destroyed);
    delete policy;
    return destroyed == 1;
}

// Policies that have no table of their own.
struct BareBorder : Border {
    BorderTable& get() override
    {
        static BorderTable table;
        return table;
    }
};

struct BareInterpolator : Interpolator {
    InterpolatorTable& get() override
    {
        static InterpolatorTable table;
        return table;
    }
};

// A table that hands the slots of all element types to Owner::onFetch. One link of the chain
// overrides one slot.
template <class Owner, class... Types>
struct FetchTable : BorderTable {
};

template <class Owner, class T, class... Types>
struct FetchTable<Owner, T, Types...> : FetchTable<Owner, Types...> {
    using FetchTable<Owner, Types...>::fetch;
    T fetch(Border& policy, const VxImage<T>& image, int x, int y, int z, unsigned int c, T value,
            unsigned int width, unsigned int height, unsigned int depth) override
    {
        return static_cast<Owner&>(policy).onFetch(image, x, y, z, c, value, width, height, depth);
    }
};

// The same for the slots of all element types and border kinds, handed to Owner::onInvoke.
template <class Owner, class... Types>
struct InvokeTable : InterpolatorTable {
};

template <class Owner, class T, class... Types>
struct InvokeTable<Owner, T, Types...> : InvokeTable<Owner, Types...> {
    using InvokeTable<Owner, Types...>::invoke;
    double invoke(Interpolator& policy, const VxImage<T>& image, double x, double y, double z,
                  unsigned int c, Replication border, T value) override
    {
        return static_cast<Owner&>(policy).onInvoke(image, x, y, z, c, border, value);
    }
    double invoke(Interpolator& policy, const VxImage<T>& image, double x, double y, double z,
                  unsigned int c, Constant border, T value) override
    {
        return static_cast<Owner&>(policy).onInvoke(image, x, y, z, c, border, value);
    }
    double invoke(Interpolator& policy, const VxImage<T>& image, double x, double y, double z,
                  unsigned int c, Border* border, T value) override
    {
        return static_cast<Owner&>(policy).onInvoke(image, x, y, z, c, border, value);
    }
};

struct Index {
    int x;
    int y;
    int z;
    friend bool operator==(const Index& a, const Index& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
    friend std::ostream& operator<<(std::ostream& out, const Index& index)
    {
        return out << '(' << index.x << ' ' << index.y << ' ' << index.z << ')';
    }
};

// A border that notes what it is asked, and gives what `answer` says.
struct RecordingBorder : Border {
    template <class... Types>
    using Table = FetchTable<RecordingBorder, Types...>;
    struct Call {
        Index index;
        unsigned int channel;
        double value;
        unsigned int width;
        unsigned int height;
        unsigned int depth;
        const void* image;
        const std::type_info* type;
    };

    std::vector<Call> calls;
    int gets = 0;
    std::function<double(const Index&)> answer = [](const Index&) { return 0.0; };

    BorderTable& get() override
    {
        static OfElementTypes<Table> table;
        ++gets;
        return table;
    }

    template <class T>
    T onFetch(const VxImage<T>& image, int x, int y, int z, unsigned int c, T value,
              unsigned int width, unsigned int height, unsigned int depth)
    {
        calls.push_back(
            {{x, y, z}, c, static_cast<double>(value), width, height, depth, &image, &typeid(T)});
        return static_cast<T>(answer({x, y, z}));
    }

    std::vector<Index> indices() const
    {
        std::vector<Index> all;
        for (const Call& call : calls)
            all.push_back(call.index);
        return all;
    }
};

// Whether each call passed on the arguments of the sampling call and the extents of the image.
template <class T>
void expectPassedOn(const RecordingBorder& border, const VxImage<T>& image, unsigned int channel,
                    double value, const Index& extents)
{
    for (const RecordingBorder::Call& call : border.calls) {
        EXPECT_EQ(call.channel, channel);
        EXPECT_EQ(call.value, value);
        EXPECT_EQ(call.width, static_cast<unsigned int>(extents.x));
        EXPECT_EQ(call.height, static_cast<unsigned int>(extents.y));
        EXPECT_EQ(call.depth, static_cast<unsigned int>(extents.z));
        EXPECT_EQ(call.image, &image);
        EXPECT_EQ(*call.type, typeid(T));
    }
}

// An interpolator that notes what it is asked, and always gives `result`.
struct RecordingInterpolator : Interpolator {
    template <class... Types>
    using Table = InvokeTable<RecordingInterpolator, Types...>;
    struct Call {
        double x;
        double y;
        double z;
        unsigned int channel;
        double value;
        const void* image;
        const std::type_info* type;
        const std::type_info* borderKind;
        const Border* border;  // null unless the border is a run-time one
    };

    std::vector<Call> calls;
    int gets = 0;
    double result = 0.0;

    InterpolatorTable& get() override
    {
        static OfElementTypes<Table> table;
        ++gets;
        return table;
    }

    template <class T, class B>
    double onInvoke(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                    const B& border, T value)
    {
        calls.push_back({x, y, z, c, static_cast<double>(value), &image, &typeid(T), &typeid(B),
                         asRunTimeBorder(border)});
        return result;
    }

private:
    static const Border* asRunTimeBorder(Border* border) { return border; }
    static const Border* asRunTimeBorder(const Constant&) { return nullptr; }
    static const Border* asRunTimeBorder(const Replication&) { return nullptr; }
};

// The volume repeats without end. Uses the table that forwards to a member template.
struct PeriodicBorder : Border {
    BorderTable& get() override
    {
        static Border::border_t<PeriodicBorder, Border> table;
        return table;
    }

    template <class T>
    T fetch(const VxImage<T>& image, int x, int y, int z, unsigned int c, T, unsigned int width,
            unsigned int height, unsigned int depth)
    {
        return image(wrapInto(width, x), wrapInto(height, y), wrapInto(depth, z),
                     static_cast<int>(c));
    }

private:
    static int wrapInto(unsigned int extent, int index)
    {
        const int period = static_cast<int>(extent);
        const int rest = index % period;
        return rest < 0 ? rest + period : rest;
    }
};

}  // namespace volux::test
