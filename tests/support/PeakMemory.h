#pragma once

#include "tests/support/Bytes.h"

#include <QTest>

namespace pagestack {

/// Fails the current test when this process ever had more than `limitKilobytes` of memory; skips it
/// where that is not known.
inline void checkPeakMemory(int limitKilobytes)
{
#ifdef QT_FORCE_ASSERTS // in every sanitized build, see PagestackOptions.cmake
    QSKIP("a sanitizer takes more than the program");
#endif
    const QByteArray all = bytesOf(QStringLiteral("/proc/self/status"));
    if (all.isEmpty())
        QSKIP("this system does not tell the memory of a process");
    const QByteArray peak = all.mid(all.indexOf("VmHWM:"), 24).split('\n').first();
    const int kilobytes = peak.mid(6).chopped(3).trimmed().toInt();
    QVERIFY2(kilobytes > 0 && kilobytes < limitKilobytes, peak);
}

} // namespace pagestack
