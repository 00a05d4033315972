#pragma once

// What nearly every test needs.

#include "tests/support/Bytes.h"
#include "tests/support/TextRows.h"

#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

namespace pagestack {

/// The reason of the exception that `run` throws; null when it throws none.
inline QString reasonOf(const std::function<void()>& run)
{
    try {
        run();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

} // namespace pagestack
using namespace pagestack;
using namespace Qt::StringLiterals;
