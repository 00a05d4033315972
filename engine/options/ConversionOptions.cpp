#include "engine/options/ConversionOptions.h"

#include "engine/options/NamePattern.h"
#include "engine/options/PageChoice.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int mostDpi = 100'000;

    /// What users read, in the language that is in force when the table is made.
    struct Texts
    {
        Q_DECLARE_TR_FUNCTIONS(pagestack::ConversionOptions)
    };

    using Options = ConversionOptions;
    using Row = const ConversionOptionRow&;
    using Text = const QString&;

    /// The name of a format as `formatNames` has it; also that of its files' usual ending, in any
    /// case.
    QString formatName(Text value)
    {
        const QString name = value.toLower();
        if (name == u"jpg")
            return u"jpeg"_s;
        return name == u"tif" ? u"tiff"_s : name;
    }

    bool isOn(Row row, Text text) { return choiceOf(text, u"false|true"_s, row.name) == 1; }

    QString onOrOff(bool isOn) { return isOn ? u"true"_s : u"false"_s; }

    int digits(Text text)
    {
        try {
            return text == u"auto" ? 0 : numberOf(text, 1, 9, u"digits"_s);
        } catch (const OptionError&) {
            throw OptionError(u"digits '%1' is neither auto nor a number from 1 to 9"_s.arg(text));
        }
    }

    std::vector<std::pair<QString, QString>> digitChoices()
    {
        std::vector<std::pair<QString, QString>> choices {
            { u"1"_s, u"1, 2 ... 10"_s }, { u"auto"_s, Texts::tr("As many as the last page has") }
        };
        for (int count = 2; count <= 9; ++count)
            choices.emplace_back(QString::number(count),
                                 u"%1 (%2)"_s.arg(count).arg(1, count, 10, QChar(u'0')));
        return choices;
    }

    template <bool RunOptions::*Flag>
    ConversionOptionRow flag(Text name, Text meaning, Text label, Text section)
    {
        return { name,
                 u""_s,
                 meaning,
                 label,
                 [](Options& options, Row row, Text text) { options.run.*Flag = isOn(row, text); },
                 [](const Options& options, Row) { return onOrOff(options.run.*Flag); },
                 section };
    }

    /// Of what is done to pages.
    template <bool PageTreatment::*Flag>
    ConversionOptionRow treatmentFlag(Text name, Text meaning, Text label, Text section)
    {
        return { name,
                 u""_s,
                 meaning,
                 label,
                 [](Options& options, Row row, Text text) {
                     options.run.treatment.*Flag = isOn(row, text);
                 },
                 [](const Options& options, Row) { return onOrOff(options.run.treatment.*Flag); },
                 section };
    }

    /// "threshold=140" sets the threshold, too.
    void setBilevel(Options& options, Row row, Text text)
    {
        const QString start = u"threshold="_s;
        const bool hasNumber = text.startsWith(start);
        if (hasNumber)
            options.run.treatment.threshold
                = numberOf(text.mid(start.size()), 1, 255, u"threshold of "_s + row.name);
        options.run.treatment.bilevel = Bilevel { hasNumber ? static_cast<int>(Bilevel::Threshold)
                                                            : choiceOf(text, row.value, row.name) };
    }

    std::vector<ConversionOptionRow> makeTable()
    {
        return {
            { u"format"_s, formatNames(),
              Texts::tr("output format, default jpeg; also jpg and tif, in any case"), u""_s,
              [](Options& options, Row row, Text text) {
                  options.outputType
                      = OutputType { choiceOf(formatName(text), row.value, row.name) };
              },
              [](const Options& options, Row row) {
                  return row.value.split(u'|').at(int(options.outputType));
              } },
            { u"quality"_s, u"0..10"_s, Texts::tr("JPEG quality in tenths, default 10"), u""_s,
              [](Options& options, Row row, Text text) {
                  options.jpegQuality = numberOf(text, 0, 10, row.name);
              },
              [](const Options& options, Row) { return QString::number(options.jpegQuality); } },
            { u"compression"_s, u"none|g3|g4|lzw|packbits"_s,
              Texts::tr("TIFF compression, default none"), u""_s,
              [](Options& options, Row row, Text text) {
                  options.tiffCompression = TiffCompression { choiceOf(text, row.value, row.name) };
              },
              [](const Options& options, Row row) {
                  return row.value.split(u'|').at(int(options.tiffCompression));
              } },
            { u"split"_s, u""_s, Texts::tr("TIFF: one file a page instead of one a source"), u""_s,
              [](Options& options, Row row, Text text) { options.isSplit = isOn(row, text); },
              [](const Options& options, Row) { return onOrOff(options.isSplit); } },
            { u"separator"_s,
              u"TEXT"_s,
              Texts::tr("stands between name and page number, default empty; ':' becomes '-'"),
              u""_s,
              [](Options& options, Row, Text text) {
                  // A slash would turn the base name into a folder.
                  if (text.contains(u'/'))
                      throw OptionError(u"separator '%1' holds a slash"_s.arg(text));
                  if (!text.isEmpty() && !isPath(text))
                      throw OptionError(u"separator '%1' is no UTF-8 text"_s.arg(
                          QString(text).remove(QChar::Null)));
                  options.separator = text;
              },
              [](const Options& options, Row) { return options.separator; },
              u""_s,
              {},
              u""_s,
              true },
            flag<&RunOptions::mirrorsFolders>(
                u"mirror"_s,
                Texts::tr(
                    "repeats the folders of the sources below the output folder: those below a "
                    "folder that is given, or below the deepest one that holds all that is given"),
                Texts::tr("Keep folder structure"), Texts::tr("Folders and names")),
            { u"digits"_s, u"auto|1..9"_s,
              Texts::tr("page numbers have at least so many digits, default 1; auto: as many as "
                        "that of the source's last page"),
              Texts::tr("Digits of page numbers"),
              [](Options& options, Row, Text text) { options.run.digits = digits(text); },
              [](const Options& options, Row) {
                  return options.run.digits == 0 ? u"auto"_s : QString::number(options.run.digits);
              },
              Texts::tr("Folders and names"), digitChoices() },
            { u"name"_s,
              u"PATTERN"_s,
              Texts::tr("what outputs are called, without the extension, default '%1'; also "
                        "{pages} the source has, {folder} of the source, {parent} of that folder "
                        "and {n}, the running number of the output; {n:6}, {page:6} and {pages:6} "
                        "have at least six digits; {sep} and {page} are empty in a file that keeps "
                        "all pages together; ':' becomes '-'")
                  .arg(NamePattern::usual()),
              Texts::tr("Names of outputs"),
              [](Options& options, Row, Text text) {
                  if (!text.isEmpty())
                      const NamePattern checked(text);
                  options.run.namePattern = text;
              },
              [](const Options& options, Row) { return options.run.namePattern; },
              Texts::tr("Folders and names"),
              {},
              NamePattern::usual(),
              true },
            { u"pages"_s,
              u"LIST"_s,
              Texts::tr(
                  "the pages of each source that are converted, from 1 on, such as 1,3-5,-1: 3- is "
                  "the third and all behind it, -1 the last, -3- the last three, 2--2 all but the "
                  "first and the last; a page that a source lacks is an error of that source"),
              Texts::tr("Pages to convert"),
              [](Options& options, Row, Text text) {
                  const PageChoice checked(text);
                  options.run.pages = text.trimmed();
              },
              [](const Options& options, Row) { return options.run.pages; },
              Texts::tr("Pages"),
              {},
              Texts::tr("all; 1,3-5,-1") },
            flag<&RunOptions::skipsReduced>(
                u"skip-reduced"_s,
                Texts::tr("leaves out thumbnails and masks, pages whose SubfileType says so; page "
                          "numbers stay"),
                Texts::tr("Leave out thumbnails and masks"), Texts::tr("Pages")),
            flag<&RunOptions::reencodes>(
                u"reencode"_s,
                Texts::tr("JPEG at quality 10: decodes pages whose data are JPEG and encodes them "
                          "anew; else their data are taken over as they are"),
                Texts::tr("Encode JPEG data anew"), Texts::tr("Pages")),
            treatmentFlag<&PageTreatment::keepsCompression>(
                u"keep-compression"_s,
                Texts::tr("TIFF: copies the data of pages as they are compressed, JPEG included; "
                          "what cannot be copied gets --compression"),
                Texts::tr("Keep the compression of TIFF pages"), Texts::tr("Pages")),
            treatmentFlag<&PageTreatment::stripsMetadata>(
                u"strip-metadata"_s,
                Texts::tr("JPEG, PNG, TIFF: leaves out what pages say of themselves (texts, dates, "
                          "XMP, Exif, GPS, IPTC); colour profile and resolution stay"),
                Texts::tr("Leave out metadata"), Texts::tr("Pages")),
            { u"expect-dpi"_s,
              u"N"_s,
              Texts::tr("warns of pages whose resolution is not N pixels an inch; they are "
                        "converted as they are"),
              Texts::tr("Expected resolution"),
              [](Options& options, Row row, Text text) {
                  options.run.treatment.expectedDpi
                      = text.isEmpty() ? 0 : numberOf(text, 1, mostDpi, row.name);
              },
              [](const Options& options, Row) {
                  const int dpi = options.run.treatment.expectedDpi;
                  return dpi == 0 ? u""_s : QString::number(dpi);
              },
              Texts::tr("Pages"),
              {},
              Texts::tr("any; 300 for 300 dpi") },
            { u"bilevel"_s,
              u"none|threshold|otsu|dither"_s,
              Texts::tr("makes gray and colour black and white, as fax compressions need: white "
                        "from a threshold of luminance on ('threshold=140' sets it), from the one "
                        "that parts the levels of a page best, or by error diffusion; pages one "
                        "bit deep stay as they are"),
              Texts::tr("Black and white"),
              setBilevel,
              [](const Options& options, Row row) {
                  return row.value.split(u'|').at(static_cast<int>(options.run.treatment.bilevel));
              },
              Texts::tr("Colours"),
              { { u"none"_s, Texts::tr("Off") },
                { u"threshold"_s, Texts::tr("By a threshold") },
                { u"otsu"_s, Texts::tr("By the best threshold of each page") },
                { u"dither"_s, Texts::tr("By dithering") } } },
            { u"threshold"_s,
              u"1..255"_s,
              Texts::tr("the threshold of --bilevel threshold, default 128"),
              Texts::tr("Threshold"),
              [](Options& options, Row row, Text text) {
                  options.run.treatment.threshold = text.isEmpty()
                      ? PageTreatment().threshold
                      : numberOf(text, 1, 255, row.name);
              },
              [](const Options& options, Row) {
                  const int threshold = options.run.treatment.threshold;
                  return threshold == PageTreatment().threshold ? u""_s
                                                                : QString::number(threshold);
              },
              Texts::tr("Colours"),
              {},
              Texts::tr("128, of 1 to 255") },
            treatmentFlag<&PageTreatment::convertsToSrgb>(
                u"srgb"_s,
                Texts::tr(
                    "converts colours to sRGB through the page's profile, which is then left out"),
                Texts::tr("Convert colours to sRGB"), Texts::tr("Colours")),
            treatmentFlag<&PageTreatment::keepsDate>(
                u"keep-dates"_s, Texts::tr("gives outputs the modification time of their source"),
                Texts::tr("Keep file dates"), Texts::tr("Files")),
            flag<&RunOptions::verifies>(u"verify"_s,
                                        Texts::tr("reads each output back before it gets its name; "
                                                  "one that does not show its page is not saved"),
                                        Texts::tr("Verify outputs"), Texts::tr("Proof")),
            flag<&RunOptions::writesChecksums>(
                u"checksums"_s,
                Texts::tr("writes a file SHA256SUMS beside the outputs, as 'sha256sum -c' reads "
                          "it; one that is there keeps its lines of other files"),
                Texts::tr("Write SHA256SUMS"), Texts::tr("Proof")),
            flag<&RunOptions::writesRecord>(
                u"keep-record"_s,
                Texts::tr("writes a record of the run, a JSON document, beside its log"),
                Texts::tr("Write a record of the run"), Texts::tr("Proof")),
        };
    }

} // namespace

ConversionOptions conversionOptions(const Settings& settings, const RunOptions& run)
{
    ConversionOptions options;
    const auto code = [](int value, int most) { return value >= 0 && value <= most ? value : 0; };
    options.outputType = OutputType { code(settings.outputType(), int(OutputType::Gif)) };
    options.jpegQuality = std::clamp(settings.jpegQuality(), 0, 10);
    options.tiffCompression
        = TiffCompression { code(settings.tiffCompressionIndex(), int(TiffCompression::PackBits)) };
    options.isSplit = settings.isSplitTIFFIntoSinglePages();
    options.separator = settings.separator();
    options.run = run;
    return options;
}

void applyTo(Settings& settings, const ConversionOptions& options)
{
    settings.setOutputType(static_cast<int>(options.outputType));
    settings.setJpegQuality(options.jpegQuality);
    settings.setTiffCompressionIndex(static_cast<int>(options.tiffCompression));
    settings.setIsSplitTIFFIntoSinglePages(options.isSplit);
    settings.setSeparator(options.separator);
}

const std::vector<ConversionOptionRow>& conversionOptionTable()
{
    static const std::vector<ConversionOptionRow> table = makeTable();
    return table;
}

const ConversionOptionRow* conversionOption(const QString& name)
{
    const auto row = std::ranges::find(conversionOptionTable(), name, &ConversionOptionRow::name);
    return row == conversionOptionTable().end() ? nullptr : &*row;
}

PageTreatment withoutIdleTreatment(PageTreatment treatment, OutputType type)
{
    if (type == OutputType::Jpeg)
        treatment.bilevel = Bilevel::None;
    return treatment;
}

QString idleWith(const ConversionOptions& options, const QString& name)
{
    const bool isTiff = options.outputType == OutputType::Tiff;
    QString format
        = u"the format "_s + formatNames().split(u'|').at(static_cast<int>(options.outputType));
    if (name == u"quality")
        return options.outputType == OutputType::Jpeg ? QString() : format;
    if (name == u"reencode" && options.outputType == OutputType::Jpeg)
        return options.jpegQuality >= 10 ? QString() : u"a --quality below 10"_s;
    if (name == u"reencode")
        return format;
    if (name == u"compression" || name == u"split" || name == u"keep-compression")
        return isTiff ? QString() : format;
    if (name == u"strip-metadata") // the others hold none
        return options.outputType == OutputType::Bmp || options.outputType == OutputType::Gif
            ? format
            : QString();
    if (name == u"bilevel")
        return options.outputType == OutputType::Jpeg ? format : QString();
    if (name == u"threshold" && options.outputType == OutputType::Jpeg)
        return format;
    if (name == u"threshold" && options.run.treatment.bilevel != Bilevel::Threshold)
        return format + u" without --bilevel threshold"_s;
    const QString& pattern = options.run.namePattern;
    if ((name == u"separator" || name == u"digits") && isTiff && !options.isSplit)
        return format + u" without --split"_s;
    if (name == u"separator" && !pattern.isEmpty() && !NamePattern(pattern).has(u"sep"))
        return u"a --name without {sep}"_s;
    if (name == u"digits" && !pattern.isEmpty() && !NamePattern(pattern).hasPlainPage())
        return u"a --name without {page}"_s;
    return {};
}

const QString& formatNames()
{
    static const QString names = u"jpeg|png|tiff|bmp|gif"_s;
    return names;
}

int choiceOf(const QString& text, const QString& list, const QString& what)
{
    const qsizetype place = list.split(u'|').indexOf(text);
    if (place < 0)
        throw OptionError(u"%1 '%2' is none of %3"_s.arg(what, text, list));
    return static_cast<int>(place);
}

int numberOf(const QString& text, int least, int most, const QString& what)
{
    bool isNumber = !text.isEmpty();
    for (const QChar digit : text)
        isNumber = isNumber && digit >= u'0' && digit <= u'9';
    const int taken = isNumber ? text.toInt(&isNumber) : 0;
    if (!isNumber || taken < least || taken > most)
        throw OptionError(u"%1 '%2' is no number from %3 to %4"_s.arg(
            what, text, QString::number(least), QString::number(most)));
    return taken;
}

} // namespace pagestack
