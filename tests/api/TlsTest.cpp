// The client against the sandbox over HTTPS. Its own process: the server URL is fixed by the
// first request. While the host does not trust the sandbox's certificate every request gets its
// failure value and nothing reaches the backend; once the host trusts it, as a merchant adds a
// private CA to Qt's default SSL configuration, the same requests succeed.
#include "RequestTypes.h"

#include "api/UrlSession.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"
#include "sandbox/TlsIdentity.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

std::string send(const RequestType &type, const QString &pendingId)
{
    auto recorder = std::make_shared<Recorder>();
    type.send(recorder, pendingId);
    if (!recorder->waitForCallback())
        return "no callback";
    const auto calls = recorder->calls();
    EXPECT_EQ(calls.size(), 1u);
    return type.describe(calls.front());
}

TEST(Tls, RequestsGoThroughOnlyOnceTheHostTrustsTheCertificate)
{
    const sandbox::TlsIdentity identity = sandbox::TlsIdentity::selfSigned();
    sandbox::Sandbox backend;
    ASSERT_GT(backend.startHttps(identity), 0);
    ASSERT_TRUE(ApiManager::setServerUrl(QString::fromStdString(backend.baseUrl())));

    resetDefaults();
    for (const RequestType &type : kRequestTypes) {
        SCOPED_TRACE(type.name);
        EXPECT_EQ(send(type, QStringLiteral("1700000000001")), "failure");
    }
    EXPECT_TRUE(backend.requests().empty()) << "not a byte of a request reached an unverified server";

    const QList<QSslCertificate> certificate
        = QSslCertificate::fromData(QByteArray::fromStdString(identity.certificatePem), QSsl::Pem);
    ASSERT_EQ(certificate.size(), 1);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(certificate);
    QSslConfiguration::setDefaultConfiguration(configuration);
    // Qt keeps a connection's configuration for as long as it caches the connection, even one
    // whose handshake failed; a host sets its CAs up before any request, as a new session sees.
    UrlSession::shutdownShared();

    resetDefaults();
    const QString pendingId = registerPendingPayment();
    ASSERT_FALSE(pendingId.isEmpty());
    for (std::size_t i = 0; i < kTypeCount; ++i) {
        SCOPED_TRACE(kRequestTypes[i].name);
        resetDefaults();
        EXPECT_EQ(send(kRequestTypes[i], pendingId), kSuccesses[i]);
    }
    EXPECT_EQ(backend.requests().size(), kTypeCount + 1);
}

// No line of the library may switch certificate checks off, for its requests or its bank page.
TEST(Tls, NothingInTheLibraryTurnsVerificationOff)
{
    const QRegularExpression forbidden(
        QStringLiteral("VerifyNone|QueryPeer|setPeerVerifyMode|ignoreSslErrors|sslErrors|acceptCertificate|"
                       "certificateError"));
    ASSERT_TRUE(
        forbidden.match(QStringLiteral("socket.setPeerVerifyMode(QSslSocket::VerifyNone);")).hasMatch());

    int files = 0;
    QDirIterator it(QStringLiteral(KOVENA_SOURCE_DIR "/src"),
        { QStringLiteral("*.h"), QStringLiteral("*.cpp") }, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.fileName());
        const QString text = QString::fromUtf8(file.readAll());
        const QRegularExpressionMatch match = forbidden.match(text);
        EXPECT_FALSE(match.hasMatch()) << qPrintable(file.fileName()) << ": " << qPrintable(match.captured());
        ++files;
    }
    EXPECT_GT(files, 50) << "the scan found the library's sources";
}

} // namespace
