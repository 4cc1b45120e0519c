#include "Harness.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz
{

void require(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "fuzz: does not hold: %s\n", what);
    std::abort();
}

} // namespace fuzz
