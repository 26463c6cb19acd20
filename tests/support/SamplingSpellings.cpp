#include "SamplingSpellings.h"

namespace volux::test {
namespace {

template <class I, class B, class T>
double callKernel(const Call<T>& call, B border)
{
    return static_cast<double>(
        I{}.template operator()<T, B>(call.image, call.p.x, call.p.y, call.p.z,
                                      static_cast<unsigned int>(call.channel), border, call.value));
}

template <class T, class Family, class I>
void addBorderless(Spellings<T>& all)
{
    const auto add = [&](const char* name, double (*sample)(const Call<T>&)) {
        all.push_back({Family::form, Static<I>::kind, oracle::Border::None, name, sample});
    };
    add("<I>(object)",
        [](const Call<T>& call) { return Family::template spelt<I>(call, Static<I>::object()); });
    add("<Interpolator>(pointer)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        return Family::template spelt<typename Family::RunTime>(call, pointer);
    });
    add("<Interpolator*>(pointer)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        return Family::template spelt<Interpolator*>(call, pointer);
    });
    add("(object)", [](const Call<T>& call) { return Family::deduced(call, Static<I>::object()); });
    add("(pointer)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        return Family::deduced(call, pointer);
    });
    add("(&object)",
        [](const Call<T>& call) { return Family::deduced(call, &Static<I>::object()); });
}

// With template arguments: either policy by value or as a pointer to its base.
template <class T, class Family, class I, class B>
void addSpelt(Spellings<T>& all)
{
    using RunTime = typename Family::RunTimeBordered;
    const auto add = [&](const char* name, double (*sample)(const Call<T>&)) {
        all.push_back({Family::form, Static<I>::kind, Static<B>::kind, name, sample});
    };
    add("<I, B>(object, object)", [](const Call<T>& call) {
        return Family::template spelt<I, B>(call, Static<I>::object(), Static<B>::object(),
                                            call.value);
    });
    add("<I, Border*>(object, pointer)", [](const Call<T>& call) {
        Border* border = &Static<B>::object();
        return Family::template spelt<I, Border*>(call, Static<I>::object(), border, call.value);
    });
    add("<Interpolator, B>(pointer, object)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        return Family::template spelt<RunTime, B>(call, pointer, Static<B>::object(), call.value);
    });
    add("<Interpolator, Border*>(pointer, pointer)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        Border* border = &Static<B>::object();
        return Family::template spelt<RunTime, Border*>(call, pointer, border, call.value);
    });
    add("<Interpolator*, B>(pointer, object)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        return Family::template spelt<Interpolator*, B>(call, pointer, Static<B>::object(),
                                                        call.value);
    });
    add("<Interpolator*, Border*>(pointer, pointer)", [](const Call<T>& call) {
        Interpolator* pointer = &Static<I>::object();
        Border* border = &Static<B>::object();
        return Family::template spelt<Interpolator*, Border*>(call, pointer, border, call.value);
    });
}

// Without template arguments, for one way to pass the interpolator.
template <class T, class Family, class I, class B, class Passed>
void addDeduced(Spellings<T>& all, const std::string& passed)
{
    const auto add = [&](const char* name, double (*sample)(const Call<T>&)) {
        all.push_back({Family::form, Static<I>::kind, Static<B>::kind, passed + name, sample});
    };
    add("object)", [](const Call<T>& call) {
        return Family::deduced(call, Passed::get(), Static<B>::object(), call.value);
    });
    add("pointer)", [](const Call<T>& call) {
        Border* border = &Static<B>::object();
        return Family::deduced(call, Passed::get(), border, call.value);
    });
    add("&object)", [](const Call<T>& call) {
        return Family::deduced(call, Passed::get(), &Static<B>::object(), call.value);
    });
}

template <class I>
struct AsObject {
    static I& get() { return Static<I>::object(); }
};

template <class I>
struct AsPointer {
    static Interpolator* get() { return &Static<I>::object(); }
};

template <class I>
struct AsAddress {
    static I* get() { return &Static<I>::object(); }
};

template <class T, class Family, class I, class B>
void addBordered(Spellings<T>& all)
{
    addSpelt<T, Family, I, B>(all);
    addDeduced<T, Family, I, B, AsObject<I>>(all, "(object, ");
    addDeduced<T, Family, I, B, AsPointer<I>>(all, "(pointer, ");
    addDeduced<T, Family, I, B, AsAddress<I>>(all, "(&object, ");
}

template <class T, class I, class B>
void addKernel(Spellings<T>& all)
{
    const auto add = [&](const char* name, double (*sample)(const Call<T>&)) {
        all.push_back({oracle::Form::KernelAlone, Static<I>::kind, Static<B>::kind, name, sample});
    };
    add("operator()<T, B>",
        [](const Call<T>& call) { return callKernel<I, B>(call, Static<B>::object()); });
    add("operator()<T, Border*>",
        [](const Call<T>& call) { return callKernel<I, Border*>(call, &Static<B>::object()); });
}

template <class T, class I>
void addInterpolator(Spellings<T>& all)
{
    addBorderless<T, ValueVoxel, I>(all);
    addBorderless<T, ValueReal, I>(all);
    addBorderless<T, DoubleValueReal, I>(all);
    addBordered<T, ValueVoxel, I, Constant>(all);
    addBordered<T, ValueReal, I, Constant>(all);
    addBordered<T, DoubleValueReal, I, Constant>(all);
    addBordered<T, ValueVoxel, I, Replication>(all);
    addBordered<T, ValueReal, I, Replication>(all);
    addBordered<T, DoubleValueReal, I, Replication>(all);
    addKernel<T, I, Constant>(all);
    addKernel<T, I, Replication>(all);
}

}  // namespace

template <class T>
Spellings<T> allSpellings()
{
    Spellings<T> all;
    addInterpolator<T, NearestNeighbor>(all);
    addInterpolator<T, Linear>(all);
    addInterpolator<T, Cubic>(all);
    all.push_back({oracle::Form::ValueReal, oracle::Kernel::Linear, oracle::Border::None,
                   "(x, y, z, c)", [](const Call<T>& call) {
                       return static_cast<double>(
                           call.image.getValueReal(call.p.x, call.p.y, call.p.z, call.channel));
                   }});
    return all;
}

template Spellings<unsigned char> allSpellings();
template Spellings<short> allSpellings();
template Spellings<unsigned short> allSpellings();
template Spellings<int> allSpellings();
template Spellings<unsigned int> allSpellings();
template Spellings<float> allSpellings();
template Spellings<double> allSpellings();

}  // namespace volux::test
