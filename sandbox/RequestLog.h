#pragma once

#include "sandbox/Sandbox.h"

#include <condition_variable>
#include <fstream>
#include <mutex>

namespace kovena::sandbox {

// Every request the sandbox received, kept in memory and optionally appended to a file as
// one JSON object per line. Card numbers and CVVs in bodies are masked in the file only.
class RequestLog
{
public:
    void add(RecordedRequest request);
    std::vector<RecordedRequest> all() const;
    void clear();
    bool waitFor(std::size_t count, std::chrono::milliseconds timeout) const;

    // Returns false when the file cannot be opened for appending.
    bool setFile(const std::string &path);

    // The file line for one request, without the line break.
    static std::string toJsonLine(const RecordedRequest &request);

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_added;
    std::vector<RecordedRequest> m_requests;
    std::ofstream m_file;
};

} // namespace kovena::sandbox
