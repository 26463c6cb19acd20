#include "PngFile.h"

#include <png.h>

#include "Failure.h"

namespace reslice {

std::vector<unsigned char> encodePng(const Picture& picture, const std::string& path)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width();
    image.height = picture.height();
    image.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> file(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t bytes = file.size();
    if (png_image_write_to_memory(&image, file.data(), &bytes, 0, picture.bytes(), 0, nullptr) == 0)
        cannotWrite(path, image.message);
    file.resize(bytes);
    return file;
}

}  // namespace reslice
