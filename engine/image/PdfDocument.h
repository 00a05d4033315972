#pragma once

#include <QString>

#include <cstdint>

namespace pagestack {

/// Number of pages of the PDF document at `path`, opened without a password or, when it is
/// encrypted, with `password`; 0 when that fails. Any thread.
std::uint32_t countPdfPages(const QString& path, const QString& password);

/// True when the document at `path` opens without a password or with `password`. Any thread.
bool opensAsPdf(const QString& path, const QString& password);

} // namespace pagestack
