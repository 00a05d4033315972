#include "cli/FolderReader.h"

#include "cli/NaturalOrder.h"
#include "engine/support/Paths.h"

#include <QFile>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace pagestack {

namespace {

    namespace fs = std::filesystem;

    void take(const fs::directory_entry& entry, FolderContents& contents)
    {
        const std::string bytes = entry.path().filename().string();
        if (bytes.starts_with('.'))
            return;
        const QString name = pathFromBytes(bytes.c_str());
        std::error_code ignored;
        if (entry.is_directory(ignored))
            contents.folders.append({ name, entry.is_symlink(ignored) });
        else
            contents.files.append(name);
    }

} // namespace

// Not QDir: its listings leave out, without a word, names that are no UTF-8 text.
FolderContents readFolderContents(const QString& path)
{
    FolderContents contents;
    std::error_code error;
    fs::directory_iterator entry(QFile::encodeName(path).toStdString(), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        take(*entry, contents);
    if (error)
        contents.fault = QString::fromLocal8Bit(error.message().c_str());
    std::sort(contents.files.begin(), contents.files.end(), naturallyLess);
    std::sort(contents.folders.begin(), contents.folders.end(),
              [](const auto& a, const auto& b) { return naturallyLess(a.name, b.name); });
    return contents;
}

} // namespace pagestack
