// kovena-defaults-writer FILE: stores ever newer values under "payload" in the user defaults
// file FILE until it is killed, continuing from the write number it finds there. Before each
// write it prints "begin N", after it "done N", each line in one write(2), so whoever kills it
// knows which writes had started and which had finished.
#include "DefaultsPayload.h"

#include "platform/UserDefaults.h"

#include <unistd.h>

#include <string>

namespace {

void say(const char *what, int generation)
{
    const std::string line = std::string(what) + ' ' + std::to_string(generation) + '\n';
    if (::write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        ::_exit(3);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    kovena::UserDefaults store(QString::fromLocal8Bit(argv[1]));
    int generation
        = kovena::test::defaultsGeneration(store.string(QStringLiteral("payload")).value_or(QString()));
    if (generation < 0)
        return 1;
    for (;;) {
        ++generation;
        say("begin", generation);
        store.setString(QStringLiteral("payload"), kovena::test::defaultsPayload(generation));
        say("done", generation);
    }
}
