#include "cli/OptionTable.h"

#include "engine/options/ConversionOptions.h"
#include "engine/options/Presets.h"
#include "engine/support/Application.h"
#include "engine/support/Paths.h"

#include <algorithm>

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

    constexpr unsigned planning = Command::Convert | Command::Plan | Command::Watch;
    constexpr unsigned converting = Command::Convert | Command::Run;
    constexpr unsigned reporting = converting | Command::MergeLogs;
    constexpr auto watching = static_cast<unsigned>(Command::Watch);
    constexpr unsigned everyCommand = ~0U;

    /// Bytes: "512M".
    quint64 sizeOf(const QString& value)
    {
        const qsizetype unit = QStringView(u"KMGT").indexOf(value.right(1).toUpper());
        const bool hasUnit = unit >= 0 && !value.isEmpty();
        bool isNumber = false;
        const quint64 number = (hasUnit ? value.chopped(1) : value).toULongLong(&isNumber);
        constexpr quint64 most = quint64 { 1 } << 20;
        if (!isNumber || number == 0 || (hasUnit && number > most))
            throw UsageError(u"memory-limit '%1' is no size such as 512M or 2G"_s.arg(value));
        return hasUnit ? number << (10 * (unit + 1)) : number;
    }

    qint64 millisecondsOf(const QString& value, const QString& what)
    {
        bool isNumber = false;
        const double seconds = value.toDouble(&isNumber);
        if (!isNumber || !(seconds >= 0.01 && seconds <= 86'400))
            throw UsageError(
                u"%1 '%2' is no number of seconds from 0.01 to 86400"_s.arg(what, value));
        return static_cast<qint64>(seconds * 1000);
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
                  },
                  row.name == u"verify" ? planning | Command::MergeLogs : planning });
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
              },
              planning },
            { u'o', u"output"_s, u"DIR"_s,
              u"output folder, made when it is missing and its parent exists; default: beside each "
              "source"_s,
              [](Options& options, Row, Text value) {
                  options.outputFolder = named(value, u"output folder"_s);
              },
              planning },
            { 0, u"on-exists"_s, u"error|overwrite|skip|number"_s,
              u"when a target exists: refuse the whole run (default), replace it, leave it as it "
              u"is, "
              "or number all pages of its source: scan1-2.jpg, scan2-2.jpg ...; two sources that "
              "want one target are refused, except with 'number', which numbers the later one. "
              "With "
              "'watch': 'number' is the default, and 'error' fails the source"_s,
              [](Options& options, Row row, Text value) {
                  options.onExists = OnExists { choiceOf(value, row.value, u"policy"_s) };
              },
              planning },
            { u'r', u"recursive"_s, u""_s, u"folders with their sub-folders"_s,
              &set<&Options::isRecursive>, planning },
            { 0, u"files-from"_s, u"FILE"_s,
              u"takes further paths from FILE, one a line; '-' is standard input, and so is a bare "
              u"'-' "
              "in place of a SOURCE"_s,
              [](Options& options, Row, Text value) {
                  options.pathLists.append(named(value, u"path list"_s));
              },
              Command::Convert | Command::Plan },
            { 0, u"dry-run"_s, u""_s,
              u"prints what would be written and what stands in the way, and writes nothing"_s,
              &set<&Options::isDryRun>, static_cast<unsigned>(Command::Convert) },
            { 0, u"plan"_s, u"FILE"_s, u"the plan, as 'plan' has printed it"_s,
              [](Options& options, Row, Text value) { options.planFile = named(value, u"plan"_s); },
              Command::Run | Command::MergeLogs },
            { 0, u"shard"_s, u"I/N"_s,
              u"the I-th of N parts of the plan, from 0/N to N-1/N, with as many pages as the others"_s,
              [](Options& options, Row, Text value) { options.shard = Shard::parse(value); },
              static_cast<unsigned>(Command::Run) },
            { 0, u"resume"_s, u"STATE"_s,
              u"notes what is done in the file STATE and leaves out what a former run has noted "
              u"there, "
              "if size and SHA-256 of source and outputs are still those"_s,
              [](Options& options, Row, Text value) {
                  options.stateFile = named(value, u"state"_s);
              },
              converting },
            { 0, u"done"_s, u"DIR"_s,
              u"with 'watch': folder for the files that were converted; default: the sub-folder "
              u"'done'. A name that is taken there gets a number"_s,
              [](Options& options, Row, Text value) {
                  options.watch.doneFolder = named(value, u"folder"_s);
              },
              watching },
            { 0, u"failed-folder"_s, u"DIR"_s,
              u"with 'watch': folder for those that failed, each with a text NAME.txt that says "
              u"why; default: the sub-folder 'failed'"_s,
              [](Options& options, Row, Text value) {
                  options.watch.failedFolder = named(value, u"folder"_s);
              },
              watching },
            { 0, u"settle"_s, u"SECONDS"_s,
              u"with 'watch': a file is complete when its size and time have not changed for so "
              u"long; default: 2. One that is renamed into the folder is complete at once"_s,
              [](Options& options, Row, Text value) {
                  options.watch.settleMs = millisecondsOf(value, u"settle"_s);
              },
              watching },
            { 0, u"poll"_s, u"SECONDS"_s,
              u"with 'watch': looks at the folder so often; default: when the system tells of a "
              u"change, and every 2 seconds on network file systems and where it does not"_s,
              [](Options& options, Row, Text value) {
                  options.watch.pollMs = millisecondsOf(value, u"poll"_s);
              },
              watching },
            { 0, u"state"_s, u"FILE"_s,
              u"with 'watch': notes what is in hand in FILE, by which another start goes on; "
              u"default: .pagestack-watch.jsonl in the output folder"_s,
              [](Options& options, Row, Text value) {
                  options.stateFile = named(value, u"state"_s);
              },
              watching },
            { 0, u"once"_s, u""_s, u"with 'watch': converts what is complete now, and ends"_s,
              [](Options& options, Row, Text) { options.watch.isOnce = true; }, watching },
            { 0, u"json"_s, u""_s,
              u"prints a JSON object a line for the run, each page and each source, and the sum, on standard output"_s,
              &set<&Options::isJson>, reporting | Command::Watch },
            { 0, u"failed"_s, u"FILE"_s,
              u"writes the sources that failed to FILE, with their pages, as --files-from reads them"_s,
              [](Options& options, Row, Text value) {
                  options.failedFile = named(value, u"list of failures"_s);
              },
              reporting },
            { 0, u"max-failures"_s, u"N"_s, u"ends the run when N sources have failed"_s,
              [](Options& options, Row, Text value) {
                  options.mostFailures = numberOf(value, 1, 1'000'000'000, u"max-failures"_s);
              },
              converting },
            { 0, u"jobs"_s, u"auto|N"_s,
              u"pages worked on at the same time, up to 256; default, auto or 0: as many as there "
              u"are "
              "cores, or as a control group leaves of their time and of memory"_s,
              [](Options& options, Row, Text value) {
                  options.jobs = value == u"auto" ? 0 : numberOf(value, 0, 256, u"jobs"_s);
              },
              converting | Command::Watch },
            { 0, u"memory-limit"_s, u"SIZE"_s,
              u"works on no more pages at the same time than fit into SIZE, such as 512M or 2G; "
              u"one page "
              "that is very large may take more"_s,
              [](Options& options, Row, Text value) { options.memoryLimit = sizeOf(value); },
              converting | Command::Watch },
            { 0, u"log"_s, u"FILE"_s,
              u"also writes the XML log of the run to FILE; '-' is standard output, which then "
              "holds nothing else"_s,
              [](Options& options, Row, Text value) { options.logFile = named(value, u"log"_s); },
              reporting },
            { 0, u"report"_s, u"FILE"_s,
              u"writes a report of the run to FILE, an HTML page with totals, problems and links "
              u"to "
              "the outputs"_s,
              [](Options& options, Row, Text value) {
                  options.reportFile = named(value, u"report"_s);
              },
              converting },
            { 0, u"record"_s, u"FILE"_s,
              u"writes a record of the run to FILE, a JSON document with size and SHA-256 of "
              u"sources "
              "and outputs"_s,
              [](Options& options, Row, Text value) {
                  options.recordFile = named(value, u"record"_s);
              },
              converting },
            { 0, u"no-log"_s, u""_s, u"leaves no log in the folder %1/Logs"_s.arg(getAppPath()),
              [](Options& options, Row, Text) { options.leavesLog = false; }, converting },
            { u'q', u"quiet"_s, u""_s, u"prints troubles only"_s, &set<&Options::isQuiet>,
              everyCommand },
            { u'v', u"verbose"_s, u""_s, u"also prints each file written and the system log"_s,
              &set<&Options::isVerbose>, everyCommand },
            { 0, u"progress"_s, u"auto|always|never"_s,
              u"pages done and time left on standard error, by default on a terminal only"_s,
              [](Options& options, Row row, Text value) {
                  options.progress = ProgressMode { choiceOf(value, row.value, u"progress"_s) };
              },
              everyCommand },
            { 0, u"list-presets"_s, u""_s, u"prints the names of the presets"_s,
              &set<&Options::wantsPresets>, everyCommand },
            { u'h', u"help"_s, u""_s, u"prints this help"_s, &set<&Options::wantsHelp>,
              everyCommand },
            { u'V', u"version"_s, u""_s, u"prints the version, with those of the libraries"_s,
              &set<&Options::wantsVersion>, everyCommand },
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

const OptionRow* optionRow(QStringView name)
{
    const auto row = std::ranges::find(optionTable(), name, &OptionRow::longName);
    return row == optionTable().end() ? nullptr : &*row;
}

QString commandsOf(const OptionRow& row)
{
    QStringList words;
    for (const CommandName& name : commandNames())
        if (row.isFor(name.command))
            words.append(name.word);
    return words.join(u", "_s);
}

} // namespace pagestack
