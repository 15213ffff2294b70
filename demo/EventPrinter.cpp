#include "EventPrinter.h"

#include <unistd.h>

#include <string>

namespace kovena::demo {

EventPrinter::~EventPrinter()
{
    if (m_out)
        std::fclose(m_out);
}

bool EventPrinter::claimStdout()
{
    std::lock_guard lock(m_mutex);
    if (m_out)
        return true;
    std::fflush(stdout);
    const int events = ::dup(STDOUT_FILENO);
    if (events < 0)
        return false;
    std::FILE *out = ::fdopen(events, "w");
    if (!out) {
        ::close(events);
        return false;
    }
    if (::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        std::fclose(out);
        return false;
    }
    m_out = out;
    return true;
}

void EventPrinter::print(const nlohmann::ordered_json &event)
{
    // Invalid UTF-8 in a message is replaced rather than allowed to throw mid-flow.
    const std::string line
        = event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
    std::lock_guard lock(m_mutex);
    std::FILE *out = m_out ? m_out : stdout;
    std::fwrite(line.data(), 1, line.size(), out);
    std::fflush(out);
}

} // namespace kovena::demo
