// Blocks of 50 sequential status enquiries against the sandbox on a warm kept-alive connection:
// through ApiManager (each answer sends the next from the session thread), and as bare
// QNetworkAccessManager POSTs of the same bytes from a thread with its own event loop.
#include "BareClient.h"
#include "Figures.h"

#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "sandbox/Sandbox.h"

#include <QCoreApplication>
#include <QUrl>

#include <atomic>

using namespace Qt::StringLiterals;

namespace kovena::bench {

namespace {

constexpr int kBlock = 50;

// Sends the next enquiry from each answer until the block is done.
class Chain : public TransactionStatusCallback, public std::enable_shared_from_this<Chain>
{
public:
    void getTransactionStatus(std::shared_ptr<TransactionStatus> status) override
    {
        if (!status)
            qFatal("a status enquiry failed");
        if (++answered < kBlock) {
            task = ApiManager::getTransactionStatus(shared_from_this(), u"42"_s, u"ORD-1"_s);
            return;
        }
        finishedAt = Clock::now();
        done = true;
    }
    DataTaskPtr task;
    int answered = 0;
    Clock::time_point finishedAt;
    std::atomic<bool> done { false };
};

int requestFigure(const Options &options)
{
    sandbox::Sandbox sandbox;
    if (sandbox.start() == 0)
        return 1;
    const QString base = QString::fromStdString(sandbox.baseUrl());
    if (!ApiManager::setServerUrl(base))
        return 1;

    const auto ours = [] {
        auto chain = std::make_shared<Chain>();
        const Clock::time_point start = Clock::now();
        chain->task = ApiManager::getTransactionStatus(chain, u"42"_s, u"ORD-1"_s);
        if (!waitUntil([&] { return chain->done.load(); }, 60000))
            qFatal("a block of enquiries did not finish");
        return secondsBetween(start, chain->finishedAt);
    };

    ours(); // warms the session's connection and fixes the request the baseline repeats
    const std::vector<sandbox::RecordedRequest> recorded = sandbox.requests();
    const sandbox::RecordedRequest &sent = recorded.back();
    QNetworkRequest request(QUrl(base + u"v1/sdk/txn/1/false/2"_s));
    request.setRawHeader("Content-Type", QByteArray::fromStdString(sent.header("Content-Type")));
    request.setRawHeader("Authorization", QByteArray::fromStdString(sent.header("Authorization")));
    const QByteArray body = QByteArray::fromStdString(sent.body);

    BareClient bare;
    const auto baseline = [&] {
        std::atomic<bool> done { false };
        Clock::time_point finishedAt;
        int answered = 0;
        std::function<void()> next;
        next = [&] {
            bare.post(request, body, [&](QByteArray reply) {
                if (reply.isEmpty())
                    qFatal("a baseline enquiry failed");
                // Sent from the thread's event loop, as the session sends each request: from
                // inside the finished handler the connection is still busy and Qt would open
                // another one.
                if (++answered < kBlock)
                    return bare.run(next);
                finishedAt = Clock::now();
                done = true;
            });
        };
        const Clock::time_point start = Clock::now();
        bare.run(next);
        if (!waitUntil([&] { return done.load(); }, 60000))
            qFatal("a baseline block did not finish");
        return secondsBetween(start, finishedAt);
    };
    baseline();

    // The sandbox keeps a connection for 1000 requests: 1 + 18 blocks of 50 each stay within it.
    const int blocks = options.quick ? 2 : 18;
    std::vector<double> ourBlocks, bareBlocks, ourCpu, bareCpu;
    const auto timed = [](auto run, std::vector<double> &wall, std::vector<double> &cpu) {
        const double cpuBefore = processCpuSeconds();
        wall.push_back(run());
        cpu.push_back(processCpuSeconds() - cpuBefore);
    };
    for (int i = 0; i < blocks; ++i) {
        sandbox.clearRequests();
        if (i % 2) {
            timed(ours, ourBlocks, ourCpu);
            timed(baseline, bareBlocks, bareCpu);
        } else {
            timed(baseline, bareBlocks, bareCpu);
            timed(ours, ourBlocks, ourCpu);
        }
    }
    // CPU time of the whole process (client, sandbox and all) per enquiry: it does not depend on
    // what else the machine runs, so it shows where a difference in wall time comes from.
    const double cpuOurs = median(ourCpu) / kBlock, cpuBare = median(bareCpu) / kBlock;
    printRow({ u"request CPU (per enquiry, for reference)"_s, micros(cpuOurs), micros(cpuBare),
                 times(cpuOurs / cpuBare), u"-"_s, true, false },
        options);
    // Each block against the other block of its pair, run right before or after it: the
    // speed of this shared two-core machine drifts by more than the budget within a run, and a
    // pair sees the same drift.
    std::vector<double> pairRatios;
    for (std::size_t i = 0; i < ourBlocks.size(); ++i)
        pairRatios.push_back(ourBlocks[i] / bareBlocks[i]);
    const double measured = median(ourBlocks) / kBlock;
    const double reference = median(bareBlocks) / kBlock;
    const double ratio = median(pairRatios);
    printRow({ u"request overhead (per enquiry, median of paired blocks of 50)"_s, millis(measured),
                 millis(reference), times(ratio), u"<= 1.05x"_s, ratio <= 1.05 },
        options);
    sandbox.stop();
    return 0;
}

[[maybe_unused]] const bool registered = registerFigure("request", requestFigure);

} // namespace

} // namespace kovena::bench
