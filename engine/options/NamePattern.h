#pragma once

#include <QString>

#include <vector>

namespace pagestack {

/// How the outputs of a run are called: "{stem}{sep}{page}", without the extension. Beside text
/// it has
///     {stem}    the source's name without its last extension
///     {sep}     the separator         empty in a file that keeps all pages together, as is
///     {page}    the page's number     the next one
///     {pages}   how many pages the source has
///     {folder}  the name of the source's folder, "root" for the topmost
///     {parent}  that of the folder above
///     {n}       the running number of the output in the run
/// where numbers take the digits that they have at least: {n:6} gives 000001.
class NamePattern
{
public:
    /// What an output has of each.
    struct Values
    {
        QString stem;
        QString separator;
        QString folder;
        QString parent;
        int page = 0; ///< 0: none
        int pages = 0;
        int running = 1;
        int digits = 1; ///< of {page} where the pattern says nothing else
    };

    /// Throws OptionError, which names the option "name", for a slash, braces without a partner or
    /// around anything else.
    explicit NamePattern(const QString& text);

    /// The name; a ":" in it becomes "-".
    QString filled(const Values& values) const;

    /// Whether "{field}" is in it, with digits or without.
    bool has(QStringView field) const;
    /// Whether the usual digits of a page count for something.
    bool hasPlainPage() const;

    /// What an empty option stands for.
    static const QString& usual();

private:
    struct Part
    {
        QString text; ///< or the field's name
        bool isField = false;
        int digits = 0; ///< 0: none were given
    };

    Part field(const QString& pattern, QStringView inner) const;

    std::vector<Part> m_parts;
};

} // namespace pagestack
