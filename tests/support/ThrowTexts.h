// The texts that volux_core throws, misspellings and line numbers included.
#pragma once

namespace volux::test {

constexpr const char* kBorderMisuse =
    R"(invalid use of Border*, ..\..\src\core\InterpolationType:31)";
constexpr const char* kMisuseByPointer =
    R"(invalid use of Interpolator*, ..\..\src\core\InterpolationType:45)";
constexpr const char* kMisuseByValue =
    R"(invalid use of Interpolator*, ..\..\src\core\InterpolationType:59)";
constexpr const char* kInitializeTwice =
    R"(Can not initialize twice before terminate., ..\..\src\core\VxImage:78)";
constexpr const char* kCopyIntoReserved =
    R"(Can not initialize twice before terminate., ..\..\src\core\VxImage:95)";
constexpr const char* kWrapIntoReserved =
    R"(Can not initializeWithPointer by reserved VxImage, ..\..\src\core\VxImage:114)";
constexpr const char* kResizeWrapping =
    "Can not resize VxImage that uses external memory.Use initalize with pointer insted., "
    R"(..\..\src\core\VxImage:411)";

}  // namespace volux::test
