// Moving pictures, as GIF, which every viewer of pictures shows.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "Picture.h"

struct GifFileType;  // of giflib

namespace reslice {

/// Frames of one size, encoded as they are added. 240 greys and a few steps of the accent colour:
/// a grey is off by one level of 255 at most.
class Animation {
public:
    /// Each frame lasts that many hundredths of a second; the first follows the last.
    /// An error names `path`.
    Animation(std::string path, unsigned int hundredths);
    ~Animation();
    Animation(const Animation&) = delete;
    Animation& operator=(const Animation&) = delete;

    /// Throws Failure if the frame cannot be encoded.
    void add(const Picture& frame);

    /// The bytes of the file. Call it last: no frame can be added afterwards.
    std::vector<unsigned char> finish();

    unsigned int width() const { return width_; }
    unsigned int height() const { return height_; }
    unsigned int frames() const { return frames_; }

private:
    /// Rows and columns of a frame, the ends excluded.
    struct Part {
        std::size_t left, top, right, bottom;
    };

    void require(int answer) const;
    unsigned char indexOf(const unsigned char* colour);
    void begin(const Picture& first);
    Part changedPart(const std::vector<unsigned char>& pixels) const;
    void putPart(const Part& part, std::vector<unsigned char>& pixels);

    std::string path_;
    unsigned int hundredths_;
    unsigned int width_ = 0, height_ = 0, frames_ = 0;
    std::vector<unsigned char> file_;
    GifFileType* gif_ = nullptr;
    std::map<std::array<unsigned char, 3>, unsigned char> indices_;  ///< of the colours met
    std::vector<unsigned char> shown_;                               ///< the frame before
};

}  // namespace reslice
