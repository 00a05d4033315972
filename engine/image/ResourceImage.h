#pragma once

#include "engine/image/PageImage.h"

#include <QString>

#include <optional>

namespace pagestack {

/// The first page of the TIFF file of that name, with extension, among the program's resources;
/// none when there is no such resource or it is no TIFF file.
std::optional<PageImage> createImageWithName(const QString& name);

} // namespace pagestack
