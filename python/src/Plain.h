// Calls of sample() that need no words: a few points of a plain array.
#pragma once

#include <optional>

#include "Reading.h"

namespace volux::python {

/// Answers plain calls of sample() with what the package gives, but without its checks, which take
/// several times as long as the reading of a point.
///
/// A call is plain if nothing in it can be wrong or mean two things: the image is an ndarray with
/// three axes, the points are three numbers or a short ndarray of doubles, and each keyword has one
/// of its words or its default. Types are compared exactly, so that no code of the caller's runs.
/// Every other call, right or wrong, is left to the package.
class PlainSampling {
public:
    using Anything = nb::typed<nb::tuple, nb::any, nb::ellipsis>;
    using Keywords = nb::typed<nb::dict, nb::str, nb::any>;
    using Readings = nb::typed<nb::object, nb::ndarray<nb::numpy, double>>;

    /// Takes what the package knows: the numbers that stand for kernels and for borders, the
    /// default of each keyword, and NumPy's ndarray, float64, array and empty. It comes with each
    /// call, because what is kept here would outlive the interpreter's end.
    explicit PlainSampling(const Anything& known);

    /// Returns the readings, or nothing if the call is not plain.
    std::optional<Readings> sample(const nb::tuple& arguments, const nb::dict& keywords) const;

private:
    struct Places;

    bool takeAll(const nb::dict& keywords, resample::Options& options) const;
    bool take(nb::handle keyword, nb::handle value, resample::Options& options) const;
    bool isDefault(nb::handle keyword, nb::handle value) const;
    bool isArray(nb::handle object) const { return object.type().is(arrayType_); }
    bool holdImage(nb::handle image, Source& memory) const;
    bool holdPoints(nb::handle points, Places& places) const;
    bool holdTriple(nb::handle numbers, resample::Position& point) const;
    std::optional<double> numberOf(nb::handle number) const;
    std::optional<Readings> readings(const resample::View<const void>& source, const Places& places,
                                     const resample::Options& options) const;

    nb::handle kernels_;
    nb::handle borders_;
    nb::handle defaults_;
    nb::handle arrayType_;
    nb::handle doubleType_;
    nb::handle arrayOf_;
    nb::handle emptyArray_;
};

void addPlain(nb::module_& module);

}  // namespace volux::python
