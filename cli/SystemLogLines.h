#pragma once

namespace pagestack {

class Console;

/// Leads the system log and the framework's own messages to a console while it lives: all of them,
/// or only those of grave errors. One at a time.
class SystemLogLines
{
public:
    /// `console` is borrowed.
    explicit SystemLogLines(Console& console);
    ~SystemLogLines();
    SystemLogLines(const SystemLogLines&) = delete;
    SystemLogLines& operator=(const SystemLogLines&) = delete;

    void setVerbose(bool isVerbose);
};

} // namespace pagestack
