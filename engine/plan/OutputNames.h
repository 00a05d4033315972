#pragma once

#include "engine/options/ConversionOptions.h"
#include "engine/options/NamePattern.h"
#include "engine/plan/OutputFile.h"

#include <QList>
#include <QString>

namespace pagestack {

class Settings;

/// Says how the outputs of a run are called and in which folders they are. Any thread.
class OutputNames
{
public:
    /// `settings` is borrowed. Throws OptionError for a pattern that is none.
    OutputNames(const Settings& settings, RunOptions options);

    /// `outputs` with what their names need of the whole run; numbers stay as they are, and so do
    /// outputs that are named already. The same outputs always get the same.
    QList<OutputFile> completed(QList<OutputFile> outputs) const;

    /// Folder into which the pages of `output`, which is completed, go: the settings' output folder
    /// or one below it, else the folder of the source itself.
    QString folder(const OutputFile& output) const;

    /// File name (without folder) of the output for `page`, counted from 1; 0 is the one TIFF file
    /// that keeps all pages together. As the pattern of the options says, else the source's name
    /// without its last extension, for a page with the separator (":" of both becomes "-") and its
    /// number. A number above 0 (see OutputFile) follows behind a "-", then the extension of the
    /// output type. An output type outside 0..4 gives the part before the page alone.
    QString name(const OutputFile& output, int page) const;

    /// `name` in `folder`.
    QString path(const OutputFile& output, int page) const;

private:
    friend QString exampleName(const ConversionOptions& options);

    /// Without number and extension.
    QString stem(const QString& source, int page, int pages, int running) const;

    const Settings& m_settings;
    const RunOptions m_options;
    const NamePattern m_pattern;
    const bool m_namesFolders; ///< by the pattern
};

/// What the first page of a sample source would be called, "scan01.jpg", or the file that keeps its
/// twelve pages together. Throws OptionError when its name would be empty, "." or "..".
QString exampleName(const ConversionOptions& options);

/// True when `settings` ask for one TIFF file a source, not for one file a page.
bool isKeptTogether(const Settings& settings);

} // namespace pagestack
