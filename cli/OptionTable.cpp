#include "cli/OptionTable.h"

#include "engine/support/Application.h"
#include "engine/support/Paths.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Place of `value` among the names of `list` ("jpeg|png|tiff").
    int choice(const QString& value, const QString& list, const QString& what)
    {
        const qsizetype place = list.split(u'|').indexOf(value);
        if (place < 0)
            throw UsageError(u"%1 '%2' is none of %3"_s.arg(what, value, list));
        return static_cast<int>(place);
    }

    /// The name of a format as `formats` has it; also that of its files' usual ending, in any case.
    QString formatName(const QString& value)
    {
        const QString name = value.toLower();
        if (name == u"jpg")
            return u"jpeg"_s;
        return name == u"tif" ? u"tiff"_s : name;
    }

    /// `value` as a number from 0 to `most`.
    int number(const QString& value, int most, const QString& what)
    {
        bool isNumber = !value.isEmpty();
        for (const QChar digit : value)
            isNumber = isNumber && digit >= u'0' && digit <= u'9';
        const int taken = isNumber ? value.toInt(&isNumber) : 0;
        if (!isNumber || taken > most)
            throw UsageError(
                u"%1 '%2' is no number from 0 to %3"_s.arg(what, value, QString::number(most)));
        return taken;
    }

    /// A slash in a separator would turn the base name into a folder.
    QString separator(const QString& value)
    {
        if (value.contains(u'/'))
            throw UsageError(u"separator '%1' holds a slash"_s.arg(value));
        return value;
    }

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

    std::vector<OptionRow> makeTable()
    {
        return {
            { u'f', u"format"_s, formats(),
              u"output format, default jpeg; also jpg and tif, in any case"_s,
              [](Options& options, Row row, Text value) {
                  options.outputType
                      = OutputType { choice(formatName(value), row.value, u"format"_s) };
              } },
            { 0, u"quality"_s, u"0..10"_s, u"JPEG quality in tenths, default 10"_s,
              [](Options& options, Row, Text value) {
                  options.jpegQuality = number(value, 10, u"quality"_s);
              } },
            { 0, u"compression"_s, u"none|g3|g4|lzw|packbits"_s,
              u"TIFF compression, default none"_s,
              [](Options& options, Row row, Text value) {
                  options.tiffCompression
                      = TiffCompression { choice(value, row.value, u"compression"_s) };
              } },
            { 0, u"split"_s, u""_s, u"TIFF: one file a page instead of one a source"_s,
              &set<&Options::isSplit> },
            { 0, u"separator"_s, u"TEXT"_s,
              u"stands between name and page number, default empty; ':' becomes '-'"_s,
              [](Options& options, Row, Text value) { options.separator = separator(value); } },
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
                  options.onExists = OnExists { choice(value, row.value, u"policy"_s) };
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
                  options.jobs = number(value, 256, u"jobs"_s);
              } },
            { 0, u"log"_s, u"FILE"_s,
              u"also writes the XML log of the run to FILE; '-' is standard output, which then "
              "holds nothing else"_s,
              [](Options& options, Row, Text value) { options.logFile = named(value, u"log"_s); } },
            { 0, u"no-log"_s, u""_s, u"leaves no log in the folder %1/Logs"_s.arg(getAppPath()),
              [](Options& options, Row, Text) { options.leavesLog = false; } },
            { u'q', u"quiet"_s, u""_s, u"prints troubles only"_s, &set<&Options::isQuiet> },
            { u'v', u"verbose"_s, u""_s, u"also prints each file written and the system log"_s,
              &set<&Options::isVerbose> },
            { 0, u"progress"_s, u"auto|always|never"_s,
              u"pages done and time left on standard error, by default on a terminal only"_s,
              [](Options& options, Row row, Text value) {
                  options.progress = ProgressMode { choice(value, row.value, u"progress"_s) };
              } },
            { u'h', u"help"_s, u""_s, u"prints this help"_s, &set<&Options::wantsHelp> },
            { u'V', u"version"_s, u""_s, u"prints the version, with those of the libraries"_s,
              &set<&Options::wantsVersion> },
        };
    }

} // namespace

const QString& formats()
{
    static const QString names = u"jpeg|png|tiff|bmp|gif"_s;
    return names;
}

const std::vector<OptionRow>& optionTable()
{
    static const std::vector<OptionRow> table = makeTable();
    return table;
}

} // namespace pagestack
