#include "filelist/NameSearch.h"

#include <QStringMatcher>

namespace pagestack {

QList<int> rowsWithName(const FileList::Items& items, const QString& text)
{
    QList<int> rows;
    if (text.isEmpty())
        return rows;
    const QStringMatcher matcher(text, Qt::CaseInsensitive);
    const bool isPath = text.contains(u'/');
    for (int row = 0; row < items.size(); ++row) {
        const FileItem& item = *items.at(row);
        if (matcher.indexIn(isPath ? item.path() : item.name()) >= 0)
            rows.append(row);
    }
    return rows;
}

} // namespace pagestack
