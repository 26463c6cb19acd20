// How the programs of the digest are called: with the number of their rounds.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace volux::digest {

/// What main() returns: `digest` prints as many rounds as the one argument says.
template <class Digest>
int digestRounds(int count, char** arguments, const char* usage, const Digest& digest)
{
    const int rounds = count == 2 ? std::atoi(arguments[1]) : 0;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: %s\n", usage);
        return EXIT_FAILURE;
    }
    return digest(static_cast<unsigned int>(rounds)) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace volux::digest
