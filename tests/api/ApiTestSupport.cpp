#include "ApiTestSupport.h"

#include "api/SessionDataTask.h"
#include "api/UrlSession.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

namespace kovena::test {

namespace {

std::mutex g_captureMutex;
std::shared_ptr<Recorder> g_capturing;
QtMessageHandler g_previousHandler = nullptr;

void captureApiMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    std::shared_ptr<Recorder> recorder;
    {
        std::lock_guard lock(g_captureMutex);
        recorder = g_capturing;
    }
    if (recorder && context.category && qstrcmp(context.category, "kovena.api") == 0)
        recorder->add({ .kind = type == QtDebugMsg ? "debug" : "log", .first = message });
    if (g_previousHandler && type != QtDebugMsg)
        g_previousHandler(type, context, message);
}

} // namespace

sandbox::Sandbox &backend()
{
    static sandbox::Sandbox sandbox;
    static const bool ready
        = sandbox.start() > 0 && ApiManager::setServerUrl(QString::fromStdString(sandbox.baseUrl()));
    EXPECT_TRUE(ready) << "the sandbox did not start or the client did not take its URL";
    return sandbox;
}

void resetBackendAndDefaults()
{
    backend().clearRequests();
    backend().clearScriptedReplies();
    resetDefaults();
}

void resetDefaults()
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.clear();
    defaults.setBool(QStringLiteral("retry"), false);
    defaults.setString(QStringLiteral("requestId"), QStringLiteral("REQ-1"));
}

void flushSessionThread()
{
    auto done = std::make_shared<std::atomic<bool>>(false);
    const QNetworkRequest request = UrlSession::makeRequest(QUrl(QStringLiteral("http://127.0.0.1:9/")));
    auto task
        = UrlSession::shared()->dataTask(request, std::nullopt, [done](DataTaskResult) { *done = true; });
    task->cancel(); // completes through a block queued behind everything already there
    EXPECT_TRUE(QTest::qWaitFor([&] { return done->load(); }, kWaitMs));
}

JsonValue bodyOf(const sandbox::RecordedRequest &request)
{
    return JsonValue::parse(request.body, nullptr, false);
}

void Recorder::add(Call call)
{
    call.onSessionThread = UrlSession::isSessionThread();
    call.onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
    std::lock_guard lock(m_mutex);
    m_sequence.push_back(std::move(call));
}

bool Recorder::waitForCallback(int timeoutMs)
{
    const bool arrived = QTest::qWaitFor([&] { return !calls().empty(); }, timeoutMs);
    flushSessionThread();
    return arrived;
}

std::vector<Recorder::Call> Recorder::calls() const
{
    auto out = sequence();
    std::erase_if(out, [](const Call &call) { return !call.isCallback(); });
    return out;
}

std::vector<Recorder::Call> Recorder::sequence() const
{
    std::lock_guard lock(m_mutex);
    return m_sequence;
}

LogCapture::LogCapture(std::shared_ptr<Recorder> recorder)
{
    std::lock_guard lock(g_captureMutex);
    g_capturing = std::move(recorder);
    g_previousHandler = qInstallMessageHandler(captureApiMessages);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(g_previousHandler);
    std::lock_guard lock(g_captureMutex);
    g_capturing.reset();
}

Recorder::Call exchange(const Request &request, const sandbox::ScriptedReply &reply)
{
    backend().enqueueReply(request.path, reply);
    auto recorder = std::make_shared<Recorder>();
    request.send(recorder);
    EXPECT_TRUE(recorder->waitForCallback());
    const auto calls = recorder->calls();
    EXPECT_EQ(calls.size(), 1u) << "every request calls back exactly once";
    return calls.empty() ? Recorder::Call {} : calls.front();
}

} // namespace kovena::test
