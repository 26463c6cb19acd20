// What is digested under one name: all spellings of a front end with one kernel and one border.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/SamplingSpellings.h"

namespace volux::digest {

using test::Call;

template <class T>
struct Family {
    test::oracle::Form form;
    std::vector<double (*)(const Call<T>&)> spellings;

    bool isPhysical() const
    {
        using test::oracle::Form;
        return form == Form::ValueReal || form == Form::DoubleValueReal;
    }
};

template <class T>
using Families = std::map<std::string, Family<T>>;

// A border of the caller's own: the volume mirrored at its edges.
struct Mirrored : core::Border {
    border_t<Border, Empty>& get() override
    {
        static border_t<Mirrored, Border> table;
        return table;
    }

    template <class T>
    T fetch(const core::VxImage<T>& image, int x, int y, int z, unsigned int c, T,
            unsigned int width, unsigned int height, unsigned int depth)
    {
        return image(mirrored(x, width), mirrored(y, height), mirrored(z, depth),
                     static_cast<int>(c));
    }

private:
    static int mirrored(int index, unsigned int extent)
    {
        const int size = static_cast<int>(extent);
        const int rest = index % (2 * size);
        const int place = rest < 0 ? rest + 2 * size : rest;
        return place < size ? place : 2 * size - 1 - place;
    }
};

template <class T, class I>
void addOwnBorder(Families<T>& families, const std::string& kernel)
{
    static Mirrored border;
    using Member = test::DoubleValueReal;
    families["getDoubleValueReal, " + kernel + ", own border"] = {
        Member::form,
        {[](const Call<T>& call) {
             return Member::deduced(call, test::Static<I>::object(), &border, call.value);
         },
         [](const Call<T>& call) {
             return Member::deduced(call, &test::Static<I>::object(), &border, call.value);
         }}};
}

// "getValueReal, Linear, Constant": what all spellings of a family have in common.
template <class T>
std::string familyOf(test::Spelling<T> spelling)
{
    spelling.name = spelling.form == test::oracle::Form::KernelAlone ? "operator()" : "";
    return nameOf(spelling);
}

template <class T>
Families<T> allFamilies()
{
    Families<T> families;
    for (const test::Spelling<T>& spelling : test::allSpellings<T>()) {
        Family<T>& family = families[familyOf(spelling)];
        family.form = spelling.form;
        family.spellings.push_back(spelling.sample);
    }
    addOwnBorder<T, core::NearestNeighbor>(families, "NearestNeighbor");
    addOwnBorder<T, core::Linear>(families, "Linear");
    addOwnBorder<T, core::Cubic>(families, "Cubic");
    return families;
}

}  // namespace volux::digest
