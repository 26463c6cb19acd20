// Checks of what the library throws: the text, and the lines left on the error stream.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CapturedStderr.h"
#include "volux/base/Exception.h"

namespace volux::test {

/// Runs the call and gives the text of the volux::base::Exception that it throws, caught by
/// reference; an empty text if it throws nothing.
template <class Call>
std::string thrownText(const Call& call)
{
    try {
        call();
    } catch (const volux::base::Exception& error) {
        return error.what();
    }
    return {};
}

/// True when the call throws exactly this text and, the handler done, has left it twice on the
/// error stream: once for the object built at the throw site, once for the thrown copy.
template <class Call>
::testing::AssertionResult throwsAndPrintsTwice(const Call& call, const std::string& text)
{
    const CapturedStderr printed;
    const std::string thrown = thrownText(call);
    if (thrown != text)
        return ::testing::AssertionFailure()
               << "thrown: \"" << thrown << "\", not \"" << text << '"';
    if (printed.text() != text + "\n" + text + "\n")
        return ::testing::AssertionFailure() << "printed: \"" << printed.text() << '"';
    return ::testing::AssertionSuccess();
}

}  // namespace volux::test
