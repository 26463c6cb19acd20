#include "Store.h"

#include <cstring>

namespace volux::resample::detail {

namespace {

std::size_t bytesOf(core::DataType type)
{
    switch (type) {
        case core::DT_UCHAR:
            return sizeof(unsigned char);
        case core::DT_SHORT:
        case core::DT_USHORT:
            return sizeof(short);
        case core::DT_DOUBLE:
            return sizeof(double);
        default:
            return sizeof(int);
    }
}

// The size is a constant, so that each move is one of the processor's.
template <std::size_t Bytes>
void scatter(const unsigned char* elements, std::size_t count, std::ptrdiff_t stride,
             unsigned char* to)
{
    for (std::size_t n = 0; n < count; ++n) {
        std::memcpy(to + stride * static_cast<std::ptrdiff_t>(n), elements + n * Bytes, Bytes);
    }
}

}  // namespace

void store(core::DataType type, Overflow overflow, const double* readings, std::size_t count,
           std::int64_t stride, unsigned char* first)
{
    const std::size_t bytes = bytesOf(type);
    if (stride == static_cast<std::int64_t>(bytes)) {
        convert(type, overflow, readings, count, first);
        return;
    }
    alignas(double) unsigned char elements[kBlock * sizeof(double)];
    convert(type, overflow, readings, count, elements);
    const auto pitch = static_cast<std::ptrdiff_t>(stride);
    switch (bytes) {
        case sizeof(std::uint8_t):
            return scatter<sizeof(std::uint8_t)>(elements, count, pitch, first);
        case sizeof(std::uint16_t):
            return scatter<sizeof(std::uint16_t)>(elements, count, pitch, first);
        case sizeof(std::uint32_t):
            return scatter<sizeof(std::uint32_t)>(elements, count, pitch, first);
        default:
            return scatter<sizeof(std::uint64_t)>(elements, count, pitch, first);
    }
}

}  // namespace volux::resample::detail
