#include "DemoBackend.h"

#include "DemoOptions.h"

#include "api/ApiManager.h"
#include "platform/Reachability.h"
#include "sandbox/Sandbox.h"

using namespace Qt::StringLiterals;

namespace kovena::demo {

DemoBackend::DemoBackend() = default;

DemoBackend::~DemoBackend()
{
    if (m_sandbox)
        m_sandbox->stop();
}

bool DemoBackend::start(const DemoOptions &options, QString *error)
{
    QString url = options.serverUrl;
    if (url.isEmpty()) {
        m_sandbox = std::make_unique<sandbox::Sandbox>();
        if (m_sandbox->start(0) == 0) {
            m_sandbox.reset();
            *error = u"the sandbox could not listen on a loopback port"_s;
            return false;
        }
        if (!options.recordFile.isEmpty())
            m_sandbox->setRecordFile(options.recordFile.toStdString());
        url = QString::fromStdString(m_sandbox->baseUrl());
        // The sandbox is on the loopback interface, which is always there: a machine without
        // any other network can still run every flow against it.
        reachability::setProbe([] { return std::optional<std::uint32_t>(reachability::Reachable); });
    }
    if (!ApiManager::setServerUrl(url)) {
        *error = u"the library refused the backend URL "_s + url;
        return false;
    }
    m_baseUrl = url;
    return true;
}

QString DemoBackend::description() const
{
    return (isSandbox() ? u"Sandbox "_s : u"Backend "_s) + m_baseUrl;
}

} // namespace kovena::demo
