#include "cli/OptionTable.h"

#include "engine/options/ConversionOptions.h"
#include "engine/options/Presets.h"
#include "engine/support/Application.h"
#include "engine/support/Paths.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString named(const QString& value, const QString& what)
    {
        if (value.isEmpty())
            throw UsageError(u"the name of the %1 is empty"_s.arg(what));
        if (!isPath(value))
            throw UsageError(u"the name of the %1 is no UTF-8 text"_s.arg(what));
        return value;
    }

    using Row = const OptionRow&;
    using Text = const QString&;

    template <bool Options::*Flag>
    void set(Options& options, Row, Text)
    {
        options.*Flag = true;
    }

    /// The options that the window and presets have as well.
    std::vector<OptionRow> conversionRows()
    {
        std::vector<OptionRow> rows;
        for (const ConversionOptionRow& row : conversionOptionTable())
            rows.push_back(
                { row.name == u"format" ? u'f' : u'\0', row.name, row.value, row.meaning,
                  [](Options& options, Row option, Text value) {
                      const ConversionOptionRow& known = *conversionOption(option.longName);
                      if (value.isEmpty() && !value.isNull() && !known.isFlag()
                          && !known.mayBeEmpty)
                          throw UsageError(u"the value of option --%1 is empty"_s.arg(known.name));
                      known.set(options.conversion, known, value.isNull() ? u"true"_s : value);
                  } });
        return rows;
    }

    /// Those of the program, as short as they can be given.
    QString presetNames()
    {
        QStringList names;
        for (const Preset& preset : shippedPresets())
            names.append(u'"' + shortName(preset) + u'"');
        return names.join(u", "_s);
    }

    std::vector<OptionRow> programRows()
    {
        return {
            { 0, u"preset"_s, u"NAME|FILE"_s,
              u"takes all options above from a preset, which those given besides override "
              u"(--verify=false turns one off): one "
              u"that "
              u"was saved in the window, a JSON file, or one of the program's own: %1"_s.arg(
                  presetNames()),
              [](Options& options, Row, Text value) {
                  options.conversion = findPreset(value).options;
              } },
            { u'o', u"output"_s, u"DIR"_s,
              u"output folder, made when it is missing and its parent exists; default: beside each "
              "source"_s,
              [](Options& options, Row, Text value) {
                  options.outputFolder = named(value, u"output folder"_s);
              } },
            { 0, u"on-exists"_s, u"error|overwrite|skip|number"_s,
              u"when a target exists: refuse the whole run (default), replace it, leave it as it "
              u"is, "
              "or number all pages of its source: scan1-2.jpg, scan2-2.jpg ...; two sources that "
              "want one target are refused, except with 'number', which numbers the later one"_s,
              [](Options& options, Row row, Text value) {
                  options.onExists = OnExists { choiceOf(value, row.value, u"policy"_s) };
              } },
            { u'r', u"recursive"_s, u""_s, u"folders with their sub-folders"_s,
              &set<&Options::isRecursive> },
            { 0, u"files-from"_s, u"FILE"_s,
              u"takes further paths from FILE, one a line; '-' is standard input, and so is a bare "
              u"'-' "
              "in place of a SOURCE"_s,
              [](Options& options, Row, Text value) {
                  options.pathLists.append(named(value, u"path list"_s));
              } },
            { 0, u"jobs"_s, u"N"_s,
              u"pages worked on at the same time, up to 256; default or 0: as many as there are "
              "cores"_s,
              [](Options& options, Row, Text value) {
                  options.jobs = numberOf(value, 0, 256, u"jobs"_s);
              } },
            { 0, u"log"_s, u"FILE"_s,
              u"also writes the XML log of the run to FILE; '-' is standard output, which then "
              "holds nothing else"_s,
              [](Options& options, Row, Text value) { options.logFile = named(value, u"log"_s); } },
            { 0, u"report"_s, u"FILE"_s,
              u"writes a report of the run to FILE, an HTML page with totals, problems and links "
              u"to "
              "the outputs"_s,
              [](Options& options, Row, Text value) {
                  options.reportFile = named(value, u"report"_s);
              } },
            { 0, u"record"_s, u"FILE"_s,
              u"writes a record of the run to FILE, a JSON document with size and SHA-256 of "
              u"sources "
              "and outputs"_s,
              [](Options& options, Row, Text value) {
                  options.recordFile = named(value, u"record"_s);
              } },
            { 0, u"no-log"_s, u""_s, u"leaves no log in the folder %1/Logs"_s.arg(getAppPath()),
              [](Options& options, Row, Text) { options.leavesLog = false; } },
            { u'q', u"quiet"_s, u""_s, u"prints troubles only"_s, &set<&Options::isQuiet> },
            { u'v', u"verbose"_s, u""_s, u"also prints each file written and the system log"_s,
              &set<&Options::isVerbose> },
            { 0, u"progress"_s, u"auto|always|never"_s,
              u"pages done and time left on standard error, by default on a terminal only"_s,
              [](Options& options, Row row, Text value) {
                  options.progress = ProgressMode { choiceOf(value, row.value, u"progress"_s) };
              } },
            { 0, u"list-presets"_s, u""_s, u"prints the names of the presets"_s,
              &set<&Options::wantsPresets> },
            { u'h', u"help"_s, u""_s, u"prints this help"_s, &set<&Options::wantsHelp> },
            { u'V', u"version"_s, u""_s, u"prints the version, with those of the libraries"_s,
              &set<&Options::wantsVersion> },
        };
    }

} // namespace

const std::vector<OptionRow>& optionTable()
{
    static const std::vector<OptionRow> table = [] {
        std::vector<OptionRow> rows = conversionRows();
        for (const OptionRow& row : programRows())
            rows.push_back(row);
        return rows;
    }();
    return table;
}

} // namespace pagestack
