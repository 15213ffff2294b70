#pragma once

#include "sandbox/Sandbox.h"

#include <deque>
#include <mutex>
#include <optional>

namespace kovena::sandbox {

// Scripted replies waiting for their endpoint, first in first out per endpoint.
class ScriptBook
{
public:
    void enqueue(const std::string &endpoint, ScriptedReply reply);
    std::optional<ScriptedReply> take(const std::string &endpoint);
    void clear();

private:
    std::mutex m_mutex;
    std::map<std::string, std::deque<ScriptedReply>> m_queues;
};

} // namespace kovena::sandbox
