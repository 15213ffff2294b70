#include "sandbox/RequestLog.h"

#include "sandbox/WireText.h"

#include <nlohmann/json.hpp>

namespace kovena::sandbox {

void RequestLog::add(RecordedRequest request)
{
    std::lock_guard lock(m_mutex);
    if (m_file.is_open()) {
        m_file << toJsonLine(request) << '\n';
        m_file.flush();
    }
    m_requests.push_back(std::move(request));
    m_added.notify_all();
}

std::vector<RecordedRequest> RequestLog::all() const
{
    std::lock_guard lock(m_mutex);
    return m_requests;
}

void RequestLog::clear()
{
    std::lock_guard lock(m_mutex);
    m_requests.clear();
}

bool RequestLog::waitFor(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock lock(m_mutex);
    return m_added.wait_for(lock, timeout, [&] { return m_requests.size() >= count; });
}

bool RequestLog::setFile(const std::string &path)
{
    std::lock_guard lock(m_mutex);
    if (m_file.is_open())
        m_file.close();
    if (path.empty())
        return true;
    m_file.open(path, std::ios::out | std::ios::app);
    return m_file.is_open();
}

std::string RequestLog::toJsonLine(const RecordedRequest &request)
{
    nlohmann::ordered_json headers = nlohmann::ordered_json::array();
    for (const auto &[name, value] : request.headers)
        headers.push_back(nlohmann::ordered_json::array({ name, value }));
    nlohmann::ordered_json line = {
        { "time", wire::utcTimestamp() },
        { "method", request.method },
        { "path", request.path },
        { "headers", std::move(headers) },
        { "body", wire::maskCardData(request.body) },
    };
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace kovena::sandbox
