#pragma once

#include "engine/plan/OutputFile.h"
#include "mainwindow/run/RunPace.h"

#include <QList>
#include <QString>

#include <optional>

namespace pagestack {

class OutputNames;
class RunPlan;
class Settings;

/// Whether numbers keep the outputs of a run apart; those of several pages of one source may not.
bool isSolvedBy(const RunPlan& numbered);

/// What to ask or, where numbers are no help, to tell the user about a `plan` whose outputs would
/// replace each other or sources: the first of them, and how one is named by the plan `numbered`.
QString planQuestion(const RunPlan& plan, const RunPlan& numbered);

/// Whether an output would replace its own source.
bool hasOwnSource(const RunPlan& plan);

/// What a run is to write, whose `outputs` are completed, in a few words: "12 files, 480 pages: 480
/// images in /out, such as scan01.jpg", with their bytes where these are known.
QString planSummary(const QList<OutputFile>& outputs, const OutputNames& names,
                    const Settings& settings, const RunWork& work, std::optional<quint64> bytes);

/// What to ask about the files at the targets of a `plan`, of which there are some.
QString existingQuestion(const RunPlan& plan);

} // namespace pagestack
