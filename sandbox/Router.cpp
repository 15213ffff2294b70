#include "sandbox/Router.h"

#include <nlohmann/json.hpp>

namespace kovena::sandbox {

void Router::add(const std::string &method, const std::string &endpoint, Handler handler)
{
    m_routes[{ method, endpoint }] = std::move(handler);
}

Reply Router::dispatch(
    const std::string &method, const std::string &endpoint, const RecordedRequest &request) const
{
    if (auto it = m_routes.find({ method, endpoint }); it != m_routes.end())
        return it->second(request);
    for (const auto &[key, handler] : m_routes) {
        if (key.second == endpoint)
            return { 405, nlohmann::json { { "error", "Method not allowed" } }.dump() };
    }
    return { 404, nlohmann::json { { "error", "Not found" } }.dump() };
}

} // namespace kovena::sandbox
