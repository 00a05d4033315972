#pragma once

#include "filelist/FileItem.h"

#include <QList>
#include <QString>

#include <compare>
#include <memory>
#include <optional>

namespace pagestack {

/// One planned output of a run: a source file and the items that are read for it.
struct OutputFile
{
    using Items = QList<std::shared_ptr<FileItem>>;

    /// Full path of the source file. Its last component names the outputs, its folder takes them
    /// when no output folder is set.
    QString filename = QString::fromLatin1("");
    Items fileItems; ///< in the order in which they are read; normally the one item of `filename`
    /// Stands behind the names of the outputs, "scan1-2.jpg", where a name would be that of another
    /// file; 0: nothing does. See RunPlan.
    int number = 0;
    /// Where the outputs go below the output folder, "box/1"; empty: the folder itself. As what
    /// follows, OutputNames::completed() says it.
    QString subfolder {};
    QList<int> pages {}; ///< of its item that are converted, from 1 on, ascending
    int firstRunning = 1; ///< running number of the first of the outputs
    /// The three above are set and stay: a plan names the outputs, of which some may be left out
    /// now.
    bool isNamed = false;

    /// Sets both fields, or none when `path` is null or there are no `items`.
    void initWithData(const QString& path, const std::optional<Items>& items)
    {
        if (path.isNull() || !items)
            return;
        filename = path;
        fileItems = *items;
    }
};

/// Place of an item in the list of planned outputs.
struct PlanPlace
{
    qsizetype output = 0;
    qsizetype item = 0; ///< among the items of the output

    // clang-tidy 14 takes the zero that a comparison is compared with for a pointer.
    friend auto operator<=>(const PlanPlace&, const PlanPlace&)
        = default; // NOLINT(modernize-use-nullptr)
};

} // namespace pagestack
