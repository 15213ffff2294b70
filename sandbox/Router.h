#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kovena::sandbox {

struct RecordedRequest;

// What an endpoint answers.
struct Reply
{
    int status = 200;
    std::string body;
    std::string contentType = "application/json;charset=UTF-8";
    std::vector<std::pair<std::string, std::string>> headers {}; // beyond Content-Type, e.g. Location
};

// Finds the handler of an endpoint (the path after the router's base, e.g. "/KoVena/") by method.
// Unknown paths and wrong methods get JSON errors, so a client under test never hangs on a typo.
class Router
{
public:
    using Handler = std::function<Reply(const RecordedRequest &)>;

    void add(const std::string &method, const std::string &endpoint, Handler handler);
    Reply dispatch(
        const std::string &method, const std::string &endpoint, const RecordedRequest &request) const;

private:
    std::map<std::pair<std::string, std::string>, Handler> m_routes;
};

} // namespace kovena::sandbox
