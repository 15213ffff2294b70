#pragma once

// The one way the library stops the process: a one-line diagnostic on stderr, then abort.
// Used only where continuing would act on a value that must be there and is not.
namespace kovena {

[[noreturn]] void fatalError(const char *what);

} // namespace kovena
