#pragma once

#include <QTest>

namespace pagestack {

/// Columns of texts and a row for each line of `lines`, which is its name, too; '|' stands between
/// the texts, and blanks around them do not count. A backslash joins a line with the next one.
inline void addTextRows(std::initializer_list<const char*> columns, const char* lines)
{
    for (const char* column : columns)
        QTest::addColumn<QString>(column);
    const QString joined = QString::fromUtf8(lines).remove(QRegularExpression(u"\\\\\n *"_s));
    for (const QString& line : joined.split(u'\n', Qt::SkipEmptyParts)) {
        QTestData& row = QTest::newRow(qPrintable(line.simplified()));
        for (const QString& text : line.split(u'|'))
            row << text.trimmed();
    }
}

} // namespace pagestack
