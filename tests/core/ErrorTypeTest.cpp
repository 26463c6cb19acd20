#include "volux/core/ErrorType.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <type_traits>

#include "support/Names.h"

namespace volux::test {
namespace {

struct CodeCase {
    ErrorType code;
    std::int32_t value;
    std::uint32_t bits;
    const char* name;
};

constexpr CodeCase kCodes[] = {
    {ErrorType::SUCCESS, 0, 0x00000000, "SUCCESS"},
    {ErrorType::ERR_INVALID_ARGUMENT, -9728, 0xFFFFDA00, "ERR_INVALID_ARGUMENT"},
    {ErrorType::ERR_NULL_POINTER, -9792, 0xFFFFD9C0, "ERR_NULL_POINTER"},
    {ErrorType::ERR_INVALID_X, -9864, 0xFFFFD978, "ERR_INVALID_X"},
    {ErrorType::ERR_INVALID_Y, -9872, 0xFFFFD970, "ERR_INVALID_Y"},
    {ErrorType::ERR_INVALID_Z, -9880, 0xFFFFD968, "ERR_INVALID_Z"},
    {ErrorType::ERR_INVALID_CHANNEL, -9896, 0xFFFFD958, "ERR_INVALID_CHANNEL"},
    {ErrorType::ERR_EXTERNAL_MEMORY, -121800, 0xFFFE2438, "ERR_EXTERNAL_MEMORY"},
    {ErrorType::ERR_ALLOCATION_FAILED, -121100, 0xFFFE26F4, "ERR_ALLOCATION_FAILED"},
};

TEST(ErrorCodes, HaveTheirFixedValues)
{
    for (const CodeCase& entry : kCodes)
        EXPECT_EQ(static_cast<std::int32_t>(entry.code), entry.value) << entry.name;
}

TEST(ErrorCodes, HaveTheirFixedBits)
{
    for (const CodeCase& entry : kCodes)
        EXPECT_EQ(static_cast<std::uint32_t>(entry.code), entry.bits) << entry.name;
}

TEST(ErrorCodes, AreAllDistinct)
{
    std::set<int> values;
    for (const CodeCase& entry : kCodes)
        EXPECT_TRUE(values.insert(entry.code).second) << entry.name;
}

TEST(ErrorCodes, OnlySuccessIsNotNegative)
{
    for (const CodeCase& entry : kCodes)
        EXPECT_EQ(static_cast<int>(entry.code) < 0, entry.code != SUCCESS) << entry.name;
}

static_assert(sizeof(ErrorType) == sizeof(std::int32_t));
static_assert(std::is_signed_v<std::underlying_type_t<ErrorType>>);
static_assert(SUCCESS == ErrorType::SUCCESS && ERR_INVALID_X == ErrorType::ERR_INVALID_X,
              "both spellings name one code");

}  // namespace
}  // namespace volux::test
