// volux_resample: means of blocks on one thread, with the best instruction set.
#include "Means.h"

namespace volux::bench {
namespace {

template <class T>
class Antialiased {
public:
    Antialiased(const Source<T>& source, unsigned int factor)
        : source_(source), extent_(kShrunkExtent / factor)
    {
        result_.initialize(extent_, extent_, extent_, 1);
        options_.threads = 1;
        options_.subsamples = resample::kAntialiased;
    }

    void run()
    {
        if (resample::resize(source_.image(), extent_, extent_, extent_, resample::Align::EDGES,
                             &result_, options_) != core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    }

    const T* result() const { return result_.getBufferPointer(); }

private:
    const Wrapped<T> source_;
    unsigned int extent_;
    core::VxImage<T> result_;
    resample::Options options_;
};

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    volux::bench::addMeans<volux::bench::Antialiased>("volux");
    return volux::bench::serveBulk(argc, argv);
}
