#pragma once

#include <QIODevice>

namespace pagestack {

class StagedFile;

/// Lets what writes to a QIODevice append to a staged file, which is borrowed and committed by its
/// owner. A write that fails leaves its reason at errorString().
class StagedDevice : public QIODevice
{
public:
    explicit StagedDevice(StagedFile& file);

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 size) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    StagedFile& m_file;
};

} // namespace pagestack
