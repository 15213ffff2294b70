#pragma once

#include <QByteArray>
#include <QIODevice>

namespace kovena {

// A request body that can be read once and never rewound. When a connection closes before
// any reply, Qt sends the request again if it can rewind the body; a payment request must
// never reach the backend twice, so with this body such a request fails instead.
class OneShotBody final : public QIODevice
{
public:
    explicit OneShotBody(QByteArray data, QObject *parent = nullptr);

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;
    bool reset() override { return false; }
    bool seek(qint64) override { return false; }
    qint64 length() const { return m_data.size(); }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_data;
    qint64 m_position = 0;
};

} // namespace kovena
