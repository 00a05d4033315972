#pragma once

#include "engine/options/RunOptions.h"
#include "engine/settings/OutputCodes.h"

#include <QString>

#include <stdexcept>
#include <utility>
#include <vector>

namespace pagestack {

class Settings;

/// A value that an option cannot take; the reason is one clause that names option, value and range.
class OptionError : public std::runtime_error
{
public:
    explicit OptionError(const QString& reason)
        : std::runtime_error(reason.toStdString())
    {
    }
};

/// All that says how pages are converted, whichever program asks. What is of one run alone
/// (sources, output folder, treatment of existing files) is not in it.
struct ConversionOptions
{
    OutputType outputType = OutputType::Jpeg;
    int jpegQuality = 10; ///< in tenths, 0..10
    TiffCompression tiffCompression = TiffCompression::None;
    bool isSplit = false; ///< TIFF: one file a page
    QString separator { QLatin1String("") };
    RunOptions run;

    friend bool operator==(const ConversionOptions&, const ConversionOptions&) = default;
};

/// What `settings` and `run` say together. Codes of `settings` that stand for nothing become the
/// default.
ConversionOptions conversionOptions(const Settings& settings, const RunOptions& run);

/// Sets the five fields that `settings` has, too.
void applyTo(Settings& settings, const ConversionOptions& options);

/// An option as both programs and presets know it.
struct ConversionOptionRow
{
    QString name; ///< on the command line behind "--", key in a preset
    QString value; ///< its values in the help, "auto|1..9"; empty: it is on or off
    QString meaning; ///< a clause
    QString label; ///< in the window's tab of such options; empty: it stands elsewhere
    /// Sets it from its text; that of an option without values is "true" or "false". Throws
    /// OptionError.
    void (*set)(ConversionOptions& options, const ConversionOptionRow& row, const QString& text)
        = nullptr;
    /// The text that sets it so.
    QString (*text)(const ConversionOptions& options, const ConversionOptionRow& row) = nullptr;

    // In the window, where it has a label:
    QString section {}; ///< of the tab
    /// A pop-up's texts and what it shows for them; empty: the option is typed.
    std::vector<std::pair<QString, QString>> choices {};
    QString placeholder {}; ///< for an empty text
    bool mayBeEmpty = false; ///< on the command line, too

    bool isFlag() const { return value.isEmpty(); }
};

/// All of them, in the order of help and window.
const std::vector<ConversionOptionRow>& conversionOptionTable();

/// The row `name`; null when there is none.
const ConversionOptionRow* conversionOption(const QString& name);

/// With what the option `name` has no effect, as `options` are: "the format png". Empty: it has
/// one.
QString idleWith(const ConversionOptions& options, const QString& name);

/// What of `treatment` a run to `type` does: black and white gains nothing in JPEG.
PageTreatment withoutIdleTreatment(PageTreatment treatment, OutputType type);

/// The names of the output formats by their codes: "jpeg|png".
const QString& formatNames();

/// Place of `text` among the names of `list` ("jpeg|png|tiff"). Throws OptionError.
int choiceOf(const QString& text, const QString& list, const QString& what);

/// `text` as a number from `least` to `most`. Throws OptionError.
int numberOf(const QString& text, int least, int most, const QString& what);

} // namespace pagestack
