#pragma once

#include <QString>

#include <memory>

namespace kovena::sandbox {
class Sandbox;
}

namespace kovena::demo {

struct DemoOptions;

// Where the demo's payments go: a sandbox started in this process on a free loopback port,
// or the server named on the command line. Points the library at it before any request.
class DemoBackend
{
public:
    DemoBackend();
    ~DemoBackend();
    DemoBackend(const DemoBackend &) = delete;
    DemoBackend &operator=(const DemoBackend &) = delete;

    // False with a one-line reason when the sandbox cannot start or the library refuses the URL.
    bool start(const DemoOptions &options, QString *error);
    QString baseUrl() const { return m_baseUrl; }
    bool isSandbox() const { return m_sandbox != nullptr; }
    QString description() const;

private:
    std::unique_ptr<sandbox::Sandbox> m_sandbox;
    QString m_baseUrl;
};

} // namespace kovena::demo
