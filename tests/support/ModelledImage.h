// An image and its model side by side: every call is made on both, and what they do is compared.
#pragma once

#include <optional>

#include "Difference.h"
#include "LifecycleModel.h"
#include "SlotHeap.h"
#include "ThrowSite.h"

namespace volux::test {

/// Memory of the caller's for images to wrap, and what it must hold.
template <class T>
struct CallersBlock {
    CallersBlock(SlotHeap& heap, std::size_t count, std::uint64_t seed)
        : data(static_cast<T*>(heap.lend(count * sizeof(T)))),
          values(std::make_shared<std::vector<T>>(someValues<T>(count, seed)))
    {
        std::copy(values->begin(), values->end(), data);
    }

    void compare() const
    {
        require(std::memcmp(data, values->data(), values->size() * sizeof(T)) == 0,
                "the caller's block holds something else");
    }

    T* data;
    typename ModelImage<T>::Values values;
};

/// Each member throws Difference unless the image does what the model does.
template <class T>
class ModelledImage {
public:
    explicit ModelledImage(SlotHeap& heap) : heap_(&heap) { image_.emplace(); }

    CopyableImage<T>& image() { return *image_; }
    ModelImage<T>& model() { return model_; }

    void initialize(const ImageSize& size, bool refuses)
    {
        make(model_.initialize(size, rule(refuses)), refuses, [&] {
            return image_->initialize(size.width, size.height, size.depth, size.channels);
        });
    }

    void initialize(const ModelledImage& other, bool copyData, bool refuses)
    {
        make(model_.initialize(other.model_, copyData, rule(refuses)), refuses,
             [&] { return image_->initialize(*other.image_, copyData); });
    }

    void wrap(const CallersBlock<T>& block, const ImageSize& size, bool nowhere, bool refuses)
    {
        T* const data = nowhere ? nullptr : block.data;
        make(model_.initializeWithPointer(data, block.values, size), refuses, [&] {
            return image_->initializeWithPointer(data, size.width, size.height, size.depth,
                                                 size.channels);
        });
    }

    void setImageSize(const ImageSize& size, bool refuses)
    {
        make(model_.setImageSize(size, rule(refuses)), refuses,
             [&] { return image_->setImageSize(size); });
    }

    void setImageData(const T* data, std::uint64_t bytes, bool refuses)
    {
        make(model_.setImageData(data, bytes), refuses,
             [&] { return image_->setImageData(data, bytes); });
    }

    void setVoxelSize(double x, double y, double z)
    {
        make(model_.setVoxelSize(x, y, z), false, [&] { return image_->setVoxelSize(x, y, z); });
    }

    void setImageStride(unsigned int y, unsigned int z, unsigned int c, unsigned int x)
    {
        model_.setImageStride(y, z, c, x);
        make({}, false, [&] {
            image_->setImageStride(y, z, c, x);
            return SUCCESS;
        });
    }

    void terminate(bool refuses)
    {
        make(model_.terminate(), refuses, [&] {
            image_->terminate();
            return SUCCESS;
        });
    }

    /// Destroys the image and constructs a copy in its place.
    void constructFrom(const ModelledImage& other, bool refuses)
    {
        destroy();
        make(model_.constructFrom(other.model_, rule(refuses)), refuses, [&] {
            image_.emplace(static_cast<const VxImage<T>&>(*other.image_));
            return SUCCESS;
        });
    }

    void assign(const ModelledImage& other, bool refuses)
    {
        make(model_.assign(other.model_, rule(refuses)), refuses, [&] {
            require(&image_->assign(*other.image_) == &*image_, "assignment returns another image");
            return SUCCESS;
        });
    }

    /// Destroys the image and leaves a new one in its place.
    void destroy()
    {
        make(model_.terminate(), false, [&] {
            image_.reset();
            image_.emplace();
            return SUCCESS;
        });
    }

    /// Makes a call and compares all that the effect says, and then the image with the model, which
    /// has made its step before.
    template <class Call>
    void make(const Effect& effect, bool refuses, const Call& call)
    {
        const void* const held = image_.has_value() ? image_->getBufferPointer() : nullptr;
        const int freesBefore = heap_->freesOf(held);
        {
            const SlotHeap::Service service(*heap_, refuses);
            if (effect.thrown != nullptr)
                require(bool(throwsAndPrintsTwice(call, effect.thrown)),
                        "something else is thrown or printed");
            else
                require(call() == effect.code, "another code is returned");
        }
        require(heap_->requests() == (effect.requests ? 1 : 0) &&
                    (!effect.requests || heap_->requestedBytes() == effect.requestedBytes),
                "something else is asked of the heap");
        require(heap_->frees() == (effect.frees ? 1 : 0) &&
                    heap_->freesOf(held) - freesBefore == heap_->frees(),
                "something else is given back to the heap");
        compare();
    }

    void compare()
    {
        require(agrees(*image_, model_), "fields or elements differ");
        const ImageFields<T>& f = model_.fields();
        require(image_->getImageSize() == ImageSize(f.width, f.height, f.depth, f.channels) &&
                    image_->getBufferSizeBytes() == model_.sizeBytes(),
                "the image does not answer what its fields hold");
    }

private:
    static ModelHeap rule(bool refuses) { return {refuses, SlotHeap::kMostBytes}; }

    SlotHeap* heap_;
    std::optional<CopyableImage<T>> image_;
    ModelImage<T> model_;
};

}  // namespace volux::test
