#pragma once

#include <QObject>

#include <memory>

namespace pagestack {

/// Keeps the computer from going to sleep by itself while it lives. Nothing happens, but for a line
/// in the system log, where the system offers no way. Main thread.
class SleepInhibitor : public QObject
{
    Q_OBJECT

public:
    SleepInhibitor();
    ~SleepInhibitor() override;
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;

private:
    struct Hold;

    std::unique_ptr<Hold> m_hold; ///< the system's, once it has answered
};

} // namespace pagestack
