#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace pagestack {

/// The number of pages of the PDF document at `path`; `password` opens an encrypted one. None when
/// it is damaged, no PDF document, needs another password, or when the program is built without
/// qpdf. Any thread.
std::optional<std::uint32_t> pdfPageCount(const QString& path, const QString& password);

/// Name and version of the library that counts them; empty when there is none.
QString pdfLibrary();

} // namespace pagestack
