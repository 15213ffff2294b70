// Replaces src/platform/FatalError.cpp in the fuzz targets: an intended stop of the library
// becomes an exception that only the targets catch, so that fuzzing goes on after it and can
// check what the library did before it stopped.
#include "platform/FatalError.h"

#include "FuzzSupport.h"

namespace kovena {

void fatalError(const char *what)
{
    throw fuzzing::ExpectedStop { what ? what : "" };
}

} // namespace kovena
