#pragma once

#include <QTest>

#include <algorithm>
#include <array>

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

/// A row for each line of `lines`, as above; its texts are those of textRow().
inline void addTextRows(const char* lines)
{
    QTest::addColumn<QStringList>("texts");
    for (const QString& line : QString::fromUtf8(lines).split(u'\n', Qt::SkipEmptyParts)) {
        QStringList texts;
        for (const QString& text : line.split(u'|'))
            texts.append(text.trimmed());
        QTest::newRow(qPrintable(line.simplified())) << texts;
    }
}

/// The texts of the current row, to be given names.
template <std::size_t count>
std::array<QString, count> textRow()
{
    QFETCH(const QStringList, texts);
    std::array<QString, count> row;
    std::copy_n(texts.begin(), count, row.begin());
    return row;
}

} // namespace pagestack
