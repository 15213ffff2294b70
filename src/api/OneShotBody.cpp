#include "api/OneShotBody.h"

#include <algorithm>
#include <cstring>

namespace kovena {

OneShotBody::OneShotBody(QByteArray data, QObject *parent)
    : QIODevice(parent)
    , m_data(std::move(data))
{
    // Unbuffered: the bytes are in memory already, and QIODevice's buffer would take a block of
    // its own per request to copy them through.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 OneShotBody::bytesAvailable() const
{
    return (m_data.size() - m_position) + QIODevice::bytesAvailable();
}

qint64 OneShotBody::readData(char *data, qint64 maxSize)
{
    const qint64 count = std::min(maxSize, qint64(m_data.size()) - m_position);
    if (count <= 0)
        return m_position >= m_data.size() ? -1 : 0;
    std::memcpy(data, m_data.constData() + m_position, size_t(count));
    m_position += count;
    return count;
}

} // namespace kovena
