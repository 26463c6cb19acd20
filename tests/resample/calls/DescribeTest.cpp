#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/Names.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

constexpr ErrorType kCodes[] = {SUCCESS,
                                resample::kCancelled,
                                ERR_INVALID_ARGUMENT,
                                ERR_NULL_POINTER,
                                ERR_INVALID_X,
                                ERR_INVALID_Y,
                                ERR_INVALID_Z,
                                ERR_INVALID_CHANNEL,
                                ERR_ALLOCATION_FAILED,
                                ERR_EXTERNAL_MEMORY};

TEST(Describe, GivesEachCodeASentenceOfItsOwn)
{
    std::set<std::string> sentences;
    for (const ErrorType code : kCodes) {
        const std::string sentence = resample::describe(code);
        EXPECT_EQ(sentence.back(), '.');
        EXPECT_EQ(sentence.find('.'), sentence.size() - 1) << sentence;
        EXPECT_TRUE(sentences.insert(sentence).second) << sentence;
    }
}

TEST(Describe, GivesOtherNumbersOneToo)
{
    const std::string unknown = "No operation of volux_core or volux_resample returns this code.";
    for (const int number : {-1, 2, -9727})
        EXPECT_EQ(resample::describe(static_cast<ErrorType>(number)), unknown);
}

}  // namespace
}  // namespace volux::test
