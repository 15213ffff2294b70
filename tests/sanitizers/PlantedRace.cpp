// A data race planted on purpose: two threads of ours write one plain int with nothing ordering
// them. The ThreadSanitizer build runs it with the project's suppressions in force and expects the
// report, so no suppression line can ever hide a race between two threads of our own code.
#include <QtGlobal>

#include <thread>

namespace {

int g_planted = 0;

[[gnu::noinline]] void plantedWrite(int value)
{
    g_planted = value;
}

} // namespace

int main()
{
    std::thread first([] { plantedWrite(1); });
    std::thread second([] { plantedWrite(2); });
    first.join();
    second.join();
    // Uses QtCore, so its libraries are loaded as in a suite and the suppressions meet them.
    return qVersion() != nullptr ? 0 : 1;
}
