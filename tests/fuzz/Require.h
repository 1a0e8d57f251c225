#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process when `condition` is false, so that the fuzzer keeps the input that led there.
/// Unlike an assertion it does not depend on the build type.
#define REQUIRE(condition)                                                                         \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition);         \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
