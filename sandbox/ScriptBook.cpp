#include "sandbox/ScriptBook.h"

namespace kovena::sandbox {

void ScriptBook::enqueue(const std::string &endpoint, ScriptedReply reply)
{
    std::lock_guard lock(m_mutex);
    m_queues[endpoint].push_back(std::move(reply));
}

std::optional<ScriptedReply> ScriptBook::take(const std::string &endpoint)
{
    std::lock_guard lock(m_mutex);
    auto it = m_queues.find(endpoint);
    if (it == m_queues.end() || it->second.empty())
        return std::nullopt;
    ScriptedReply reply = std::move(it->second.front());
    it->second.pop_front();
    return reply;
}

void ScriptBook::clear()
{
    std::lock_guard lock(m_mutex);
    m_queues.clear();
}

} // namespace kovena::sandbox
