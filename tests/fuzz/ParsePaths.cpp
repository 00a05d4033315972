#include "filelist/FileItem.h"
#include "filelist/PathList.h"
#include "tests/fuzz/FuzzSupport.h"

#include <QSet>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString wanted = u"TIF,TIFF,PDF"_s;

    void checkCounts(QStringView text, const PathList& list)
    {
        qsizetype lines = 0;
        for (const QStringView line : text.tokenize(u'\n'))
            lines += line.trimmed().isEmpty() ? 0 : 1;
        require(list.files.size() + list.duplicates + list.otherLines == lines,
                "every line that is not blank is counted once");
    }

    void checkFiles(const PathList& list)
    {
        QSet<QString> paths;
        QString text;
        for (const QUrl& url : list.files) {
            const QString path = url.toLocalFile();
            require(url.isLocalFile() && url.host().isEmpty() && path.startsWith(u'/'),
                    "a listed file is a local one with an absolute path");
            paths.insert(path);
            text += path + u'\n';
        }
        require(paths.size() == list.files.size(), "every file is listed once");
        const PathList again = parsePathList(text, wanted);
        require(again.files == list.files && again.duplicates == 0 && again.otherLines == 0,
                "the paths of a list make the same list");
    }

} // namespace

void parsePaths(FuzzInput input)
{
    const FuzzFolder folder;
    QString text;
    try {
        text = readPathList(folder.put(u"paths.txt"_s, input));
    } catch (const std::runtime_error& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
        // Text that is typed or pasted is made of UTF-16 code units, whatever they are.
        text.resize(static_cast<qsizetype>(input.size() / 2));
        for (qsizetype i = 0; i < text.size(); ++i) {
            const auto at = static_cast<std::size_t>(2 * i);
            text[i] = QChar(input[at] << 8 | input[at + 1]);
        }
    }
    const PathList list = parsePathList(text, wanted);
    checkCounts(text, list);
    checkFiles(list);
    for (const QUrl& url : list.files.first(qMin(list.files.size(), qsizetype { 16 }))) {
        const std::shared_ptr<FileItem> item = FileItem::initWithURL(url);
        require(item && item->filePath().isLocalFile(), "a listed file can be put into the list");
    }
}

} // namespace pagestack
