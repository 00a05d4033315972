#pragma once

#include "engine/plan/OutputFile.h"

#include <QList>
#include <QStringList>

#include <functional>

namespace pagestack {

class Settings;
struct RunOptions;

/// The sources of `outputs`, which are completed, whose first page has a colour profile other than
/// sRGB that the format of `settings` cannot hold; none where the colours are converted. Reads one
/// directory a source, and only for such formats. Any thread; ends early when `goesOn` is false.
QStringList sourcesLosingProfile(const QList<OutputFile>& outputs, const Settings& settings,
                                 const RunOptions& options, const std::function<bool()>& goesOn);

/// A clause about them; they are some.
QString profileLossText(const QStringList& sources, const Settings& settings);

} // namespace pagestack
