#include "platform/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace kovena {

void fatalError(const char *what)
{
    std::fprintf(stderr, "kovena: fatal error: %s\n", what ? what : "");
    std::fflush(stderr);
    std::abort();
}

} // namespace kovena
