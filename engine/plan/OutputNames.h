#pragma once

#include "engine/options/RunOptions.h"
#include "engine/plan/OutputFile.h"

#include <QList>
#include <QString>

namespace pagestack {

class Settings;

/// Says how the outputs of a run are called and in which folders they are. Any thread.
class OutputNames
{
public:
    /// `settings` is borrowed.
    OutputNames(const Settings& settings, RunOptions options);

    /// `outputs` with what their names need of the whole run; numbers stay as they are. The same
    /// outputs always get the same.
    QList<OutputFile> completed(QList<OutputFile> outputs) const;

    /// Folder into which the pages of `output`, which is completed, go: the settings' output folder
    /// or one below it, else the folder of the source itself.
    QString folder(const OutputFile& output) const;

    /// File name (without folder) of the output for `page`, counted from 1: the source's name
    /// without its last extension, the separator (":" of both becomes "-"), the page, the extension
    /// of the output type. An output type outside 0..4 gives the part before the page alone. A
    /// number above 0 (see OutputFile) stands before the extension, behind a "-". Page 0 is the one
    /// TIFF file that keeps all pages together, which has the source's name alone.
    QString name(const OutputFile& output, int page) const;

    /// `name` in `folder`.
    QString path(const OutputFile& output, int page) const;

private:
    QString pageName(const OutputFile& output, int page) const;

    const Settings& m_settings;
    const RunOptions m_options;
};

/// True when `settings` ask for one TIFF file a source, not for one file a page.
bool isKeptTogether(const Settings& settings);

} // namespace pagestack
