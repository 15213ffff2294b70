// kovena-sandbox: serves the local backend until SIGINT or SIGTERM.
#include "sandbox/Sandbox.h"
#include "sandbox/TlsIdentity.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

namespace {

void usage(std::ostream &out)
{
    out << "usage: kovena-sandbox [--port N] [--record FILE] [--https CERT]\n"
           "  --port N       port on 127.0.0.1 (default 8080; 0 picks a free port)\n"
           "  --record FILE  append every request to FILE as one JSON object per line\n"
           "  --https CERT   serve HTTPS with a new self-signed certificate, written to CERT\n"
           "                 (PEM) for clients to trust; its key never leaves the process\n";
}

bool parsePort(const std::string &text, int &port)
{
    if (text.empty() || text.size() > 5 || text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    port = std::stoi(text);
    return port <= 65535;
}

} // namespace

int main(int argc, char **argv)
{
    int port = 8080;
    std::string recordFile;
    std::string certificateFile;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        std::string value;
        bool hasValue = false;
        if (auto eq = arg.find('='); arg.rfind("--", 0) == 0 && eq != std::string::npos) {
            value = arg.substr(eq + 1);
            arg = arg.substr(0, eq);
            hasValue = true;
        }
        if (arg == "--help" || arg == "-h") {
            usage(std::cout);
            return 0;
        }
        if (arg != "--port" && arg != "--record" && arg != "--https") {
            std::cerr << "kovena-sandbox: unknown option " << arg << '\n';
            usage(std::cerr);
            return 2;
        }
        if (!hasValue) {
            if (i + 1 >= argc) {
                std::cerr << "kovena-sandbox: " << arg << " needs a value\n";
                return 2;
            }
            value = argv[++i];
        }
        if (arg == "--port" && !parsePort(value, port)) {
            std::cerr << "kovena-sandbox: invalid port " << value << '\n';
            return 2;
        }
        if (arg == "--record")
            recordFile = value;
        if (arg == "--https")
            certificateFile = value;
    }

    // Block the stop signals before any server thread exists, so only sigwait below sees them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    kovena::sandbox::Sandbox sandbox;
    if (!recordFile.empty()) {
        if (!std::ofstream(recordFile, std::ios::app)) {
            std::cerr << "kovena-sandbox: cannot write " << recordFile << '\n';
            return 1;
        }
        sandbox.setRecordFile(recordFile);
    }
    int bound = 0;
    if (certificateFile.empty()) {
        bound = sandbox.start(port);
    } else {
        const auto identity = kovena::sandbox::TlsIdentity::selfSigned();
        std::ofstream certificate(certificateFile, std::ios::trunc);
        if (identity.certificatePem.empty() || !(certificate << identity.certificatePem << std::flush)) {
            std::cerr << "kovena-sandbox: cannot write the certificate to " << certificateFile << '\n';
            return 1;
        }
        bound = sandbox.startHttps(identity, port);
    }
    if (bound == 0) {
        std::cerr << "kovena-sandbox: cannot listen on 127.0.0.1:" << port << '\n';
        return 1;
    }
    std::cout << "kovena-sandbox listening on " << sandbox.baseUrl() << std::endl;

    int received = 0;
    sigwait(&stopSignals, &received);
    sandbox.stop();
    return 0;
}
