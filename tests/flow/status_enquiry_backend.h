#pragma once

#include "api/ApiManager.h"
#include "sandbox/Sandbox.h"

#include <QString>

#include <gtest/gtest.h>

namespace kovena::testing {

// The in-process backend of this test process. The library is pointed at it once, before the
// first request; each test clears what earlier ones left behind.
inline sandbox::Sandbox &statusBackend()
{
    static sandbox::Sandbox backend;
    static const bool started = [] {
        const bool listening = backend.start(0) != 0;
        EXPECT_TRUE(listening) << "the sandbox did not start";
        const bool pointed = ApiManager::setServerUrl(QString::fromStdString(backend.baseUrl()));
        EXPECT_TRUE(pointed) << "the library could not be pointed at the sandbox";
        return listening && pointed;
    }();
    Q_UNUSED(started)
    return backend;
}

} // namespace kovena::testing
