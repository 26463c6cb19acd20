// The input is a program: calls on three images and two blocks of the caller's, each made on the
// model as well.
#include <array>

#include "Input.h"
#include "support/ModelledImage.h"

namespace volux::fuzz {
namespace {

using core::ImageSize;

constexpr int kMostCalls = 64;
constexpr std::size_t kCallersCount = 64;

template <class T>
class Program {
public:
    explicit Program(const Input& input) : input_(input) {}

    void run()
    {
        for (int i = 0; i < kMostCalls && !input_.empty(); ++i) {
            step();
            for (const auto& block : blocks_)
                block.compare();
            for (auto& image : images_)
                image.compare();
        }
        for (auto& image : images_)
            image.destroy();
        const char* const fault = heap_.fault();
        test::require(fault == nullptr, fault);
    }

private:
    auto& image() { return images_[input_.below(3)]; }
    const auto& block() { return blocks_[input_.below(2)]; }

    /// Mostly small; now and then all 32 bits.
    unsigned int extent(bool wide) { return wide ? input_.raw<unsigned int>() : input_.below(5); }

    ImageSize size()
    {
        const unsigned int wide = input_.below(16);  // a bit for each extent, set seldom
        const unsigned int mask = wide < 8 ? 0 : input_.below(16);
        ImageSize size;
        size.width = extent((mask & 1U) != 0);
        size.height = extent((mask & 2U) != 0);
        size.depth = extent((mask & 4U) != 0);
        size.channels = extent((mask & 8U) != 0);
        return size;
    }

    /// A block must hold what a caller says it holds.
    void wrap(test::ModelledImage<T>& image, bool refuses)
    {
        const auto& block = this->block();
        const ImageSize size = this->size();
        const bool nowhere = input_.below(8) == 0;
        const bool fits = static_cast<unsigned long long>(size.width) * size.height <= 64 &&
                          static_cast<unsigned long long>(size.depth) * size.channels <= 64 &&
                          size.width * size.height * size.depth * size.channels <= kCallersCount;
        if (nowhere || fits || !test::validSize(size, sizeof(T)))
            image.wrap(block, size, nowhere, refuses);
    }

    void setData(test::ModelledImage<T>& image, bool refuses)
    {
        const std::uint64_t exact = image.model().sizeBytes();
        const std::uint64_t bytes = input_.flag() ? exact : input_.raw<std::uint64_t>();
        if (!image.model().takesData(bytes))
            return;
        const std::size_t count = bytes == exact ? exact / sizeof(T) : 1;
        image.setImageData(test::someValues<T>(count + 1, input_.raw<std::uint8_t>()).data(), bytes,
                           refuses);
    }

    void setStride(test::ModelledImage<T>& image)
    {
        std::array<unsigned int, 4> strides{};
        for (unsigned int& stride : strides)
            stride = input_.flag() ? input_.raw<unsigned int>() : input_.below(8);
        image.setImageStride(strides[0], strides[1], strides[2], strides[3]);
    }

    void setSpacing(test::ModelledImage<T>& image)
    {
        std::array<double, 3> spacing{};
        for (double& length : spacing)
            length = input_.flag() ? input_.raw<double>() : input_.below(4) * 0.5;
        image.setVoxelSize(spacing[0], spacing[1], spacing[2]);
    }

    void copyConstruct(test::ModelledImage<T>& image, bool refuses)
    {
        auto& other = this->image();
        if (&other != &image)
            image.constructFrom(other, refuses);
    }

    void step()
    {
        auto& image = this->image();
        const unsigned int choice = input_.below(24);
        const bool refuses = choice >= 12;
        switch (choice % 12) {
            case 0:
                return image.initialize(size(), refuses);
            case 1:
                return image.initialize(this->image(), true, refuses);
            case 2:
                return image.initialize(this->image(), false, refuses);
            case 3:
                return wrap(image, refuses);
            case 4:
                return image.setImageSize(size(), refuses);
            case 5:
                return setData(image, refuses);
            case 6:
                return image.terminate(refuses);
            case 7:
                return copyConstruct(image, refuses);
            case 8:
                return image.assign(this->image(), refuses);
            case 9:
                return setStride(image);
            case 10:
                return setSpacing(image);
            default:
                return image.destroy();
        }
    }

    Input input_;
    test::SlotHeap heap_;
    std::array<test::CallersBlock<T>, 2> blocks_{test::CallersBlock<T>(heap_, kCallersCount, 100),
                                                 test::CallersBlock<T>(heap_, kCallersCount, 200)};
    std::array<test::ModelledImage<T>, 3> images_{test::ModelledImage<T>(heap_),
                                                  test::ModelledImage<T>(heap_),
                                                  test::ModelledImage<T>(heap_)};
};

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    volux::fuzz::Input input(data, size);
    volux::test::withElementType(
        input.below(7), [&](auto zero) { volux::fuzz::Program<decltype(zero)>(input).run(); });
    return 0;
}
