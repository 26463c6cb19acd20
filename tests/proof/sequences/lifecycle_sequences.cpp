// Makes every sequence of calls on an image, up to a length, and compares it
// with the model of its three states after every call.
//
// Usage: lifecycle_sequences TYPE CALLS SHARE SHARES
// The sequences are dealt out by their first call to as many programs as there
// are shares.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "support/ModelledImage.h"

namespace volux::test {
namespace {

using core::ImageSize;

constexpr std::size_t kCallersCount = 12;
constexpr int kMostCalls = 8;

/// One image, which some calls replace by its copy, and what it meets: a block
/// of the caller's and a donor with a layout and spacing of its own.
template <class T>
class Scene {
public:
    Scene() : callers_(heap_, kCallersCount, 100), donor_(heap_)
    {
        const std::vector<T> values = someValues<T>(6, 300);
        donor_.initialize(ImageSize(3, 2, 1, 1), false);
        donor_.setImageData(values.data(), 6 * sizeof(T), false);
        donor_.setImageStride(1, 6, 6, 2);
        donor_.setVoxelSize(0.5, 2.0, 3.0);
        kept_ = heap_.used();
    }
    ~Scene() { donor_.destroy(); }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void start()
    {
        heap_.reset(kept_);
        std::copy_n(untouched_.begin(), kCallersCount, callers_.values->begin());
        std::copy_n(untouched_.begin(), kCallersCount, callers_.data);
    }

    void finish()
    {
        image().destroy();
        compareSurroundings();
        const char* const fault = heap_.fault(kept_);
        require(fault == nullptr, fault);
    }

    void compareSurroundings()
    {
        callers_.compare();
        donor_.compare();
    }

    ModelledImage<T>& image() { return images_[current_]; }
    const ModelledImage<T>& donor() const { return donor_; }
    const CallersBlock<T>& callers() const { return callers_; }

    /// The elements that the image has room for without another request.
    unsigned int capacity()
    {
        return static_cast<unsigned int>(image().model().fields().bufferBytes / sizeof(T));
    }

    void replaceByCopy(bool refuses)
    {
        images_[1 - current_].constructFrom(image(), refuses);
        image().destroy();
        current_ = 1 - current_;
    }

private:
    SlotHeap heap_;
    CallersBlock<T> callers_;
    const std::vector<T> untouched_ = *callers_.values;
    ModelledImage<T> donor_;
    std::array<ModelledImage<T>, 2> images_{ModelledImage<T>(heap_), ModelledImage<T>(heap_)};
    std::size_t current_ = 0;
    int kept_ = 0;
};

template <class T>
struct Call {
    const char* name;
    void (*make)(Scene<T>&, bool refuses);
};

template <class T>
void setData(Scene<T>& s, bool refuses)
{
    static const std::vector<T> values = someValues<T>(SlotHeap::kMostBytes / sizeof(T), 700);
    const std::uint64_t bytes = s.image().model().sizeBytes();
    // Without a block there is nowhere to copy to; then, and beside a refusal,
    // the count is wrong.
    const bool wrong = refuses || !s.image().model().takesData(bytes);
    s.image().setImageData(values.data(), wrong ? bytes - 1 : bytes, refuses);
}

template <class T>
constexpr std::array<Call<T>, 12> kCalls = {{
    {"initialize",
     [](Scene<T>& s, bool refuses) { s.image().initialize(ImageSize(2, 1, 2, 1), refuses); }},
    {"initialize from an image with data",
     [](Scene<T>& s, bool refuses) { s.image().initialize(s.donor(), true, refuses); }},
    {"initialize from an image without data",
     [](Scene<T>& s, bool refuses) { s.image().initialize(s.donor(), false, refuses); }},
    {"wrap",
     [](Scene<T>& s, bool refuses) {
         s.image().wrap(s.callers(), ImageSize(1, 2, 2, 2), false, refuses);
     }},
    {"setImageSize to a smaller one",
     [](Scene<T>& s, bool refuses) {
         s.image().setImageSize(ImageSize(s.capacity() / 2, 1, 1, 1), refuses);
     }},
    {"setImageSize to an equal one",
     [](Scene<T>& s, bool refuses) {
         s.image().setImageSize(ImageSize(1, s.capacity(), 1, 1), refuses);
     }},
    {"setImageSize to a larger one",
     [](Scene<T>& s, bool refuses) {
         s.image().setImageSize(ImageSize(1, 1, s.capacity() / 2 + 1, 2), refuses);
     }},
    {"setImageData", setData<T>},
    {"terminate", [](Scene<T>& s, bool refuses) { s.image().terminate(refuses); }},
    {"copy", [](Scene<T>& s, bool refuses) { s.replaceByCopy(refuses); }},
    {"assign", [](Scene<T>& s, bool refuses) { s.image().assign(s.donor(), refuses); }},
    {"assign to itself", [](Scene<T>& s, bool refuses) { s.image().assign(s.image(), refuses); }},
}};

/// Runs through the sequences as through the numbers of a counter with a digit
/// for each call.
template <class T>
class Sequences {
public:
    static constexpr int kChoices = 2 * static_cast<int>(kCalls<T>.size());

    void run(int length, int share, int shares)
    {
        length_ = length;
        digits_ = {};
        for (digits_[0] = share; digits_[0] < kChoices; digits_[0] += shares) {
            do {
                runOne();
            } while (next());
        }
    }

    long long sequences() const { return sequences_; }
    long long calls() const { return calls_; }

    void describe(const char* difference) const
    {
        std::printf("%s after these calls:", difference);
        for (int i = 0; i <= at_ && i < length_; ++i)
            std::printf(" %s%s;", kCalls<T>[digit(i) / 2].name,
                        digit(i) % 2 == 1 ? " (refused)" : "");
        std::printf("\n");
    }

private:
    std::size_t digit(int i) const
    {
        return static_cast<std::size_t>(digits_[static_cast<std::size_t>(i)]);
    }

    /// Counts up in all digits but the first; false when they are through.
    bool next()
    {
        for (int i = length_ - 1; i > 0; --i) {
            if (++digits_[static_cast<std::size_t>(i)] < kChoices)
                return true;
            digits_[static_cast<std::size_t>(i)] = 0;
        }
        return false;
    }

    void runOne()
    {
        scene_.start();
        for (at_ = 0; at_ < length_; ++at_) {
            kCalls<T>[digit(at_) / 2].make(scene_, digit(at_) % 2 == 1);
            scene_.compareSurroundings();
            ++calls_;
        }
        scene_.finish();
        ++sequences_;
    }

    Scene<T> scene_;
    std::array<int, kMostCalls> digits_{};
    int length_ = 0;
    int at_ = 0;
    long long sequences_ = 0;
    long long calls_ = 0;
};

template <class T>
bool runAll(int longest, int share, int shares)
{
    Sequences<T> all;
    try {
        for (int length = 1; length <= longest; ++length)
            all.run(length, share, shares);
    } catch (const std::exception& difference) {
        all.describe(difference.what());
        std::fflush(stdout);
        std::_Exit(1);  // what the image has left may not bear to be destroyed
    }
    std::printf("%lld sequences %lld calls\n", all.sequences(), all.calls());
    return true;
}

int runNamed(const std::string& type, int longest, int share, int shares)
{
    if (longest < 1 || longest > kMostCalls || share < 0 || share >= shares)
        return 2;
    constexpr const char* names[] = {"uchar", "short", "ushort", "int", "uint", "float", "double"};
    const char* const* name = names;
    bool known = false;
    forEachElementType([&](auto zero) {
        known |= type == *name++ && runAll<decltype(zero)>(longest, share, shares);
    });
    return known ? 0 : 2;
}

}  // namespace
}  // namespace volux::test

int main(int count, char** words)
{
    if (count != 5)
        return 2;
    return volux::test::runNamed(words[1], std::atoi(words[2]), std::atoi(words[3]),
                                 std::atoi(words[4]));
}
