#pragma once

#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <array>

namespace pagestack {

/// The texts of each line of `lines`; '|' stands between them, and blanks around them do not count.
/// A backslash joins a line with the next one.
inline QList<QStringList> textsOf(const char* lines)
{
    static const QRegularExpression joint(QStringLiteral("\\\\\n *"));
    QList<QStringList> rows;
    for (const QString& line :
         QString::fromUtf8(lines).remove(joint).split(u'\n', Qt::SkipEmptyParts)) {
        rows.append(line.split(u'|'));
        for (QString& text : rows.back())
            text = text.trimmed();
    }
    return rows;
}

inline QTestData& newTextRow(const QStringList& texts)
{
    return QTest::newRow(qPrintable(texts.join(QStringLiteral(" | "))));
}

/// A row for each line of `lines`; its texts are those of textRow().
inline void addTextRows(const char* lines)
{
    QTest::addColumn<QStringList>("texts");
    for (const QStringList& texts : textsOf(lines))
        newTextRow(texts) << texts;
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

/// The same with a column for each text.
inline void addTextRows(std::initializer_list<const char*> columns, const char* lines)
{
    for (const char* column : columns)
        QTest::addColumn<QString>(column);
    for (const QStringList& texts : textsOf(lines)) {
        QTestData& row = newTextRow(texts);
        for (const QString& text : texts)
            row << text;
    }
}

} // namespace pagestack
