// CImg: a loop of the caller's, as its own operations have; its resize() rounds after each axis.
#include "../times/CImgSampler.h"
#include "Bulk.h"

namespace {

using namespace volux::bench;

template <class T, Kernel K, Outside O, class Target>
using Bulk = Looped<CImgSampler<T, K, O>, T, Target>;

}  // namespace

int main(int argc, char** argv)
{
    addBulk<Bulk>("CImg");
    return serveBulk(argc, argv);
}
