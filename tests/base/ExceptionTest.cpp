#include "volux/base/Exception.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/CapturedStderr.h"

namespace volux::test {
namespace {

using base::Exception;
using Lines = std::vector<std::string>;

struct CompositionCase {
    std::string message;
    std::string file;
    int line;
    std::string text;
};

const CompositionCase kCompositions[] = {
    {"abc", "f", -5, "abc, f:-5"},
    {"", "", 0, ", :0"},
    {"Can not initialize twice before terminate.", "..\\..\\src\\core\\VxImage", 78,
     "Can not initialize twice before terminate., ..\\..\\src\\core\\VxImage:78"},
    {"m", "f", 7, "m, f:7"},
    {"m", "f", INT_MAX, "m, f:2147483647"},
    {"m", "f", INT_MIN, "m, f:-2147483648"},
    {"100 %s %n", "a:b, c", 1, "100 %s %n, a:b, c:1"},
    {"two\nlines", "f", 2, "two\nlines, f:2"},
    {std::string(5000, 'x'), "long", 3, std::string(5000, 'x') + ", long:3"},
};

TEST(Exception, ComposesMessageFileAndLine)
{
    for (const CompositionCase& entry : kCompositions) {
        const CapturedStderr printed;
        const Exception error(entry.message, entry.file, entry.line);
        EXPECT_EQ(error.what(), entry.text);
    }
}

TEST(Exception, AnEmptyOneHasFourCharacters)
{
    const CapturedStderr printed;
    const Exception error("", "", 0);
    EXPECT_EQ(std::strlen(error.what()), 4U);
}

TEST(Exception, PrintsNothingWhileItLives)
{
    const CapturedStderr printed;
    const Exception error("m", "f", 1);
    EXPECT_EQ(printed.text(), "");
}

TEST(Exception, PrintsItsTextAndALineEndWhenDestroyed)
{
    const CapturedStderr printed;
    Exception("m", "f", 1);
    EXPECT_EQ(printed.text(), "m, f:1\n");
}

TEST(Exception, PrintsEveryCharacterOfItsText)
{
    const CapturedStderr printed;
    Exception(std::string("a\0b", 3), "f", 1);
    EXPECT_EQ(printed.text(), std::string("a\0b, f:1\n", 9));
}

TEST(Exception, PrintsThroughABasePointer)
{
    const CapturedStderr printed;
    std::unique_ptr<std::exception>(new Exception("m", "f", 1)).reset();
    EXPECT_EQ(printed.text(), "m, f:1\n");
}

TEST(Exception, EveryCopyPrintsOnce)
{
    const CapturedStderr printed;
    {
        const Exception first("m", "f", 1);
        const Exception second(first);
        EXPECT_STREQ(second.what(), "m, f:1");
        EXPECT_STREQ(first.what(), "m, f:1");
    }
    EXPECT_EQ(printed.lines(), (Lines{"m, f:1", "m, f:1"}));
}

TEST(Exception, ACopyOutlivesItsSource)
{
    const CapturedStderr printed;
    auto source = std::make_unique<Exception>("m", "f", 1);
    const Exception copy(*source);
    source.reset();
    EXPECT_STREQ(copy.what(), "m, f:1");
}

TEST(Exception, MovingCopies)
{
    const CapturedStderr printed;
    Exception source("m", "f", 1);
    const Exception copy(std::move(source));
    EXPECT_STREQ(source.what(), "m, f:1");
    EXPECT_STREQ(copy.what(), "m, f:1");
}

TEST(Exception, AssignmentReplacesTheText)
{
    const CapturedStderr printed;
    {
        Exception target("old", "f", 1);
        const Exception source("new", "g", 2);
        EXPECT_EQ(&(target = source), &target);
        EXPECT_STREQ(target.what(), "new, g:2");
        EXPECT_STREQ(source.what(), "new, g:2");
    }
    EXPECT_EQ(printed.lines(), (Lines{"new, g:2", "new, g:2"}));
}

TEST(Exception, SelfAssignmentChangesNothing)
{
    const CapturedStderr printed;
    {
        Exception error("m", "f", 1);
        const Exception& same = error;
        EXPECT_EQ(&(error = same), &error);
        EXPECT_STREQ(error.what(), "m, f:1");
    }
    EXPECT_EQ(printed.lines(), Lines{"m, f:1"});
}

TEST(Exception, IsCaughtAsAStandardException)
{
    const CapturedStderr printed;
    try {
        throw Exception("m", "f", 1);
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "m, f:1");
    }
}

TEST(Exception, LeavesItsArgumentsAlone)
{
    const CapturedStderr printed;
    const std::string message = "m";
    const std::string file = "f";
    Exception(message, file, 1);
    EXPECT_EQ(message, "m");
    EXPECT_EQ(file, "f");
}

TEST(Exception, AddsOneStringToItsBase)
{
    EXPECT_EQ(sizeof(Exception), sizeof(std::exception) + sizeof(std::string));
}

/// Replaces std::cerr's own buffer while it lives, and restores the stream's state.
class ReplacedBuffer {
public:
    explicit ReplacedBuffer(std::streambuf* buffer) : previous_(std::cerr.rdbuf(buffer)) {}
    ~ReplacedBuffer()
    {
        std::cerr.exceptions(std::ios_base::goodbit);
        std::cerr.rdbuf(previous_);
        std::cerr.clear();
    }
    ReplacedBuffer(const ReplacedBuffer&) = delete;
    ReplacedBuffer& operator=(const ReplacedBuffer&) = delete;

private:
    std::streambuf* previous_;
};

class ThrowingBuffer : public std::streambuf {
protected:
    int_type overflow(int_type) override { throw std::runtime_error("no room"); }
    std::streamsize xsputn(const char*, std::streamsize) override
    {
        throw std::runtime_error("no room");
    }
};

TEST(Exception, ADestructorSwallowsWhatTheStreamThrows)
{
    ThrowingBuffer full;
    const ReplacedBuffer replaced(&full);
    std::cerr.exceptions(std::ios_base::badbit | std::ios_base::failbit);
    const auto create = [] { Exception("m", "f", 1); };
    EXPECT_NO_THROW(create());
    EXPECT_TRUE(std::cerr.bad());  // it did try
}

TEST(Exception, ADestructorPutsUpWithABrokenStream)
{
    const ReplacedBuffer replaced(nullptr);
    const auto create = [] { Exception("m", "f", 1); };
    EXPECT_NO_THROW(create());
}

class CountingBuffer : public std::stringbuf {
public:
    std::string flushed;

protected:
    int sync() override
    {
        flushed = str();
        return 0;
    }
};

TEST(Exception, FlushesAfterTheLineEnd)
{
    CountingBuffer buffer;
    const ReplacedBuffer replaced(&buffer);
    std::cerr << std::nounitbuf;
    Exception("m", "f", 1);
    std::cerr << std::unitbuf;
    EXPECT_EQ(buffer.flushed, "m, f:1\n");
}

static_assert(std::is_base_of_v<std::exception, Exception>);
static_assert(std::is_convertible_v<Exception*, std::exception*>, "the base is public");
static_assert(std::is_nothrow_destructible_v<Exception>);
static_assert(std::has_virtual_destructor_v<Exception>);
static_assert(std::is_constructible_v<Exception, std::string, std::string, int>);
static_assert(!std::is_default_constructible_v<Exception>);
static_assert(std::is_same_v<
              Exception&, decltype(std::declval<Exception&>() = std::declval<const Exception&>())>);

}  // namespace
}  // namespace volux::test
