#include "engine/image/PdfDocument.h"

namespace pagestack {

std::optional<std::uint32_t> pdfPageCount(const QString&, const QString&) { return {}; }

QString pdfLibrary() { return {}; }

} // namespace pagestack
