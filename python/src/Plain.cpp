#include "Plain.h"

#include <nanobind/stl/optional.h>

#include <limits>

namespace volux::python {
namespace {

using namespace nanobind::literals;

// So many are read sooner than anybody notices who waits for Python's lock, or has pressed Ctrl-C.
constexpr std::size_t kFew = 1000;

using Doubles = nb::ndarray<const double, nb::device::cpu>;
using NewReadings = nb::ndarray<double, nb::ndim<1>, nb::device::cpu>;

bool isWord(nb::handle text, const char* word)
{
    return PyUnicode_CompareWithASCIIString(text.ptr(), word) == 0;
}

std::optional<int> chosen(nb::handle words, nb::handle word)
{
    if (!PyUnicode_CheckExact(word.ptr())) {
        return std::nullopt;
    }
    const nb::handle number = PyDict_GetItemWithError(words.ptr(), word.ptr());
    return number.is_valid() ? std::optional(nb::cast<int>(number)) : std::nullopt;
}

std::optional<long long> wholeNumber(nb::handle number)
{
    if (!PyLong_CheckExact(number.ptr())) {
        return std::nullopt;
    }
    int overflow = 0;
    const long long value = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    return overflow == 0 ? std::optional(value) : std::nullopt;
}

bool isNumberOfThreads(nb::handle number)
{
    const std::optional<long long> value = wholeNumber(number);
    return number.is_none() || (value && *value >= 1 && *value <= std::numeric_limits<int>::max());
}

}  // namespace

/// A point of our own, or the rows of an array, both in the order z, y, x.
struct PlainSampling::Places {
    std::size_t count() const { return !rows.is_valid() || isOne() ? 1 : rows.shape(0); }
    bool isOne() const { return !rows.is_valid() || rows.ndim() == 1; }

    resample::Positions positions() const
    {
        if (!rows.is_valid()) {
            return &point;
        }
        const double* const z = rows.data();
        const std::int64_t step = rows.stride(rows.ndim() - 1);
        return {z + 2 * step, z + step, z, rows.stride(0)};
    }

    resample::Position point = {};
    Doubles rows;
};

PlainSampling::PlainSampling(const Anything& known)
    : kernels_(known[0]),
      borders_(known[1]),
      defaults_(known[2]),
      arrayType_(known[3]),
      doubleType_(known[4]),
      arrayOf_(known[5]),
      emptyArray_(known[6])
{
}

std::optional<PlainSampling::Readings> PlainSampling::sample(const nb::tuple& arguments,
                                                             const nb::dict& keywords) const
{
    resample::Options options;  // whose defaults are the package's, but for the threads
    options.threads = 1;
    Source image;
    Places places;
    if (arguments.size() != 2 || !takeAll(keywords, options) || !holdImage(arguments[0], image) ||
        !holdPoints(arguments[1], places)) {
        return std::nullopt;
    }
    const std::optional<resample::View<const void>> source = volumeOf(image);
    return source ? readings(*source, places, options) : std::nullopt;
}

bool PlainSampling::takeAll(const nb::dict& keywords, resample::Options& options) const
{
    PyObject* keyword = nullptr;
    PyObject* value = nullptr;
    for (Py_ssize_t n = 0; PyDict_Next(keywords.ptr(), &n, &keyword, &value) != 0;) {
        if (!take(keyword, value, options)) {
            return false;
        }
    }
    return true;
}

bool PlainSampling::take(nb::handle keyword, nb::handle value, resample::Options& options) const
{
    if (isWord(keyword, "threads")) {
        return isNumberOfThreads(value);  // one does for so few points
    }
    if (isWord(keyword, "interpolation")) {
        const std::optional<int> kernel = chosen(kernels_, value);
        options.interpolator = kernelOf(kernel.value_or(0));
        return kernel.has_value();
    }
    if (isWord(keyword, "border")) {
        const std::optional<int> border = chosen(borders_, value);
        options.border = borderOf(border.value_or(0));
        return border.has_value();
    }
    if (isWord(keyword, "fill")) {
        const std::optional<double> outside = numberOf(value);
        options.outside = outside.value_or(0.0);
        return outside.has_value();
    }
    return isDefault(keyword, value);
}

bool PlainSampling::isDefault(nb::handle keyword, nb::handle value) const
{
    const nb::handle normal = PyDict_GetItemWithError(defaults_.ptr(), keyword.ptr());
    return normal.is_valid() &&
           (value.is(normal) || (PyUnicode_CheckExact(value.ptr()) && value.equal(normal)));
}

bool PlainSampling::holdImage(nb::handle image, Source& memory) const
{
    return isArray(image) && nb::try_cast(image, memory, false);
}

bool PlainSampling::holdPoints(nb::handle points, Places& places) const
{
    Doubles& rows = places.rows;
    if (!isArray(points)) {
        return holdTriple(points, places.point);
    }
    return nb::try_cast(points, rows, false) && (rows.ndim() == 1 || rows.ndim() == 2) &&
           rows.shape(rows.ndim() - 1) == 3 && places.count() <= kFew && isAligned(rows);
}

bool PlainSampling::holdTriple(nb::handle numbers, resample::Position& point) const
{
    const bool isTuple = PyTuple_CheckExact(numbers.ptr());
    if ((!isTuple && !PyList_CheckExact(numbers.ptr())) || nb::len(numbers) != 3) {
        return false;
    }
    std::optional<double> given[3];
    for (int n = 0; n < 3; ++n) {
        given[n] = numberOf(isTuple ? PyTuple_GetItem(numbers.ptr(), n)
                                    : PyList_GetItem(numbers.ptr(), n));
        if (!given[n]) {
            return false;
        }
    }
    point = {*given[2], *given[1], *given[0]};
    return true;
}

std::optional<double> PlainSampling::numberOf(nb::handle number) const
{
    if (PyFloat_CheckExact(number.ptr()) || number.type().is(doubleType_)) {
        return PyFloat_AsDouble(number.ptr());
    }
    const std::optional<long long> whole = wholeNumber(number);
    return whole ? std::optional(static_cast<double>(*whole)) : std::nullopt;
}

std::optional<PlainSampling::Readings> PlainSampling::readings(
    const resample::View<const void>& source, const Places& places,
    const resample::Options& options) const
{
    double one = 0.0;
    nb::object array;
    NewReadings memory;
    if (!places.isOne()) {
        array = emptyArray_(places.count());
        memory = nb::cast<NewReadings>(array);
    }
    double* const results = places.isOne() ? &one : memory.data();
    if (resample::sample(source, places.positions(), places.count(), resample::Units::VOXELS, 0,
                         results, options) != core::SUCCESS) {
        return std::nullopt;  // the package says what is wrong
    }
    return Readings(places.isOne() ? arrayOf_(one) : array);
}

void addPlain(nb::module_& module)
{
    module.def(
        "sample_plainly",
        [](const PlainSampling::Anything& known, const PlainSampling::Anything& arguments,
           const PlainSampling::Keywords& keywords) {
            return PlainSampling(known).sample(arguments, keywords);
        },
        "known"_a, "arguments"_a, "keywords"_a);
}

}  // namespace volux::python
