#include "Reading.h"

#include <nanobind/stl/array.h>

#include <new>
#include <thread>
#include <utility>

namespace volux::python {
namespace {

using namespace nanobind::literals;

constexpr std::chrono::milliseconds kBetweenLooks(50);

template <std::size_t N, class Policy>
Policy* chosen(Policy* const (&policies)[N], int number)
{
    if (number < 0 || static_cast<std::size_t>(number) >= N) {
        throw nb::value_error("no kernel or border has this number");
    }
    return policies[number];
}

// A callback may hold what holds the reading, such as the traceback of what it raised: the
// collector must see both.
int visitHeld(PyObject* self, visitproc visit, void* arg)
{
    Py_VISIT(Py_TYPE(self));
    if (nb::inst_ready(self)) {
        Py_VISIT(nb::inst_ptr<Reading>(self)->progress.ptr());
    }
    return 0;
}

int dropHeld(PyObject* self)
{
    nb::inst_ptr<Reading>(self)->progress.reset();
    return 0;
}

PyType_Slot COLLECTED[] = {{Py_tp_traverse, reinterpret_cast<void*>(visitHeld)},
                           {Py_tp_clear, reinterpret_cast<void*>(dropHeld)},
                           {0, nullptr}};

}  // namespace

core::Interpolator* kernelOf(int number)
{
    namespace Types = core::InterpolationType;
    core::Interpolator* const kernels[] = {&Types::NEAREST_NEIGHBOR, &Types::LINEAR, &Types::CUBIC,
                                           &resample::LABELS};
    return chosen(kernels, number);
}

core::Border* borderOf(int number)
{
    namespace Types = core::InterpolationBorderType;
    core::Border* const borders[] = {&Types::REPLICATION, &Types::CONSTANT};
    return chosen(borders, number);
}

Reading::Reading(int kernel, int border, double outside, bool edgeExtends, int overflow,
                 const Extents& subsamples, unsigned int threads, nb::object callback)
    : options(kernelOf(kernel), borderOf(border), outside), progress(std::move(callback))
{
    options.edgeExtends = edgeExtends;
    options.overflow = overflow == 0 ? resample::Overflow::SATURATE : resample::Overflow::WRAP;
    options.subsamples = {subsamples[0], subsamples[1], subsamples[2]};
    options.threads = threads;
}

std::atomic<int> WatchedCall::running_(0);
std::atomic<bool> WatchedCall::isExiting_(false);

void WatchedCall::perform(const Reading& reading, const Function& function)
{
    WatchedCall(reading).perform(function);
}

void WatchedCall::endAll()
{
    isExiting_ = true;
    const nb::gil_scoped_release unlocked;
    while (running_ > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void WatchedCall::perform(const Function& function)
{
    resample::Options options = reading_.options;
    options.progress = [this](double fraction) { return goesOn(fraction); };
    core::ErrorType result;
    {
        const nb::gil_scoped_release unlocked;
        result = function(options);
    }
    if (raised_) {
        std::rethrow_exception(raised_);
    }
    if (isExiting_) {
        PyErr_SetNone(PyExc_SystemExit);
        throw nb::python_error();
    }
    raiseUnlessSuccess(result);
    tell(1.0);
}

bool WatchedCall::goesOn(double fraction) noexcept
{
    if (isExiting_) {
        return false;
    }
    if (std::this_thread::get_id() != caller_ || Clock::now() - looked_ < kBetweenLooks) {
        return true;
    }
    const nb::gil_scoped_acquire locked;
    try {
        if (PyErr_CheckSignals() != 0) {
            throw nb::python_error();
        }
        tell(fraction);
    } catch (...) {
        raised_ = std::current_exception();
    }
    looked_ = Clock::now();
    return !raised_;
}

void WatchedCall::tell(double fraction)
{
    if (!reading_.progress.is_none()) {
        reading_.progress(fraction);
    }
}

void raiseUnlessSuccess(core::ErrorType result)
{
    if (result == core::ERR_ALLOCATION_FAILED) {
        throw std::bad_alloc();
    }
    if (result != core::SUCCESS) {
        throw nb::value_error(resample::describe(result));
    }
}

void addReading(nb::module_& module)
{
    nb::class_<Reading>(module, "Reading", nb::is_final(), nb::type_slots(COLLECTED))
        .def(nb::init<int, int, double, bool, int, const Extents&, unsigned int, nb::object>(),
             nb::kw_only(), "kernel"_a, "border"_a, "outside"_a, "edge_extends"_a, "overflow"_a,
             "subsamples"_a, "threads"_a, "progress"_a.none());
    nb::module_::import_("atexit").attr("register")(nb::cpp_function(&WatchedCall::endAll));
    nb::module_::import_("os").attr("register_at_fork")(
        "after_in_child"_a = nb::cpp_function(&WatchedCall::forgetOthers));
}

}  // namespace volux::python
