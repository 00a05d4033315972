#include "engine/files/StagedDevice.h"

#include "engine/files/StagedFile.h"

#include <stdexcept>

namespace pagestack {

StagedDevice::StagedDevice(StagedFile& file)
    : m_file(file)
{
    open(QIODevice::WriteOnly);
}

qint64 StagedDevice::readData(char*, qint64) { return -1; }

qint64 StagedDevice::writeData(const char* data, qint64 size)
{
    try {
        m_file.write(
            { reinterpret_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size) });
        return size;
    } catch (const std::runtime_error& error) {
        setErrorString(QString::fromUtf8(error.what()));
        return -1;
    }
}

} // namespace pagestack
