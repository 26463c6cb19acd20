#include "volux/base/Exception.h"

#include <cstdio>
#include <ostream>
#include <utility>

// <iostream> adds an initialiser that runs at load, and no code of volux_core may run then. So the
// stream is declared here, and the Init object below constructs it before its first use.
#if defined(__GLIBCXX__)
namespace std {  // NOLINT(cert-dcl58-cpp): the declaration of <iostream>, without its initialiser
extern ostream cerr;  // NOLINT(readability-identifier-naming): its name
}  // namespace std
#else
#include <iostream>
#endif

namespace volux::base {

namespace {

std::ostream& standardError()
{
    static const std::ios_base::Init constructed;
    return std::cerr;
}

}  // namespace

Exception::Exception(std::string message, std::string file, int line) : text(std::move(message))
{
    char number[16];  // std::to_string would add a symbol to the exported set
    static_cast<void>(std::snprintf(number, sizeof number, ":%d", line));
    text.append(", ").append(file).append(number);
}

Exception::Exception(const Exception& other) = default;

Exception& Exception::operator=(const Exception& other)
{
    if (this != &other) {
        std::exception::operator=(other);
        text = other.text;
    }
    return *this;
}

Exception::~Exception()
{
    try {
        standardError() << text << std::endl;
    } catch (...) {  // NOLINT(bugprone-empty-catch): a stream set to throw must not end the program
    }
}

const char* Exception::what() const noexcept
{
    return text.c_str();
}

}  // namespace volux::base
