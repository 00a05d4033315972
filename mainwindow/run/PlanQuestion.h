#pragma once

#include "engine/plan/OutputFile.h"
#include "mainwindow/run/RunPace.h"

#include <QList>
#include <QString>

#include <optional>

namespace pagestack {

class RunPlan;
class Settings;

/// Whether numbers keep the outputs of a run apart; those of several pages of one source may not.
bool isSolvedBy(const RunPlan& numbered);

/// What to ask or, where numbers are no help, to tell the user about a `plan` whose outputs would
/// replace each other or sources: the first of them, and how one is named by the plan `numbered`.
QString planQuestion(const RunPlan& plan, const RunPlan& numbered);

/// Whether an output would replace its own source.
bool hasOwnSource(const RunPlan& plan);

/// How many images `pages` of a source become.
int imagesOf(int pages, const Settings& settings);

/// What a run is to write in a few words: "12 files, 480 pages: 480 images in /out, such as
/// scan01.jpg", with their bytes where these are known. `outputs` are those of `plan`, maybe with
/// other numbers. `skipsExisting`: it leaves alone what the plan has found.
QString planSummary(const RunPlan& plan, const QList<OutputFile>& outputs, bool skipsExisting,
                    const Settings& settings, const RunWork& work, std::optional<quint64> bytes);

/// What to ask about the files at the targets of a `plan`, of which there are some.
QString existingQuestion(const RunPlan& plan);

} // namespace pagestack
