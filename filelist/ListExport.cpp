#include "filelist/ListExport.h"

#include "engine/support/Dates.h"
#include "filelist/InParallel.h"

#include <QSaveFile>

#include <algorithm>
#include <stdexcept>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype roomForALine = 200; // a guess, which saves growing the text

    void appendDate(QByteArray& line, const QDateTime& date)
    {
        line += '\t';
        line += date.isValid() ? dateDescription(date) : "(null)";
    }

    void appendLine(QByteArray& text, const FileItem& item, bool hasChoices)
    {
        const FileDates dates = item.dates();
        text += item.name().toUtf8() + '\t' + QByteArray::number(item.pages()) + '\t'
            + item.sizeInKB().toUtf8() + '\t' + item.type().toUtf8();
        appendDate(text, dates.modified);
        appendDate(text, dates.accessed);
        appendDate(text, dates.created);
        text += '\t' + item.location().toUtf8();
        if (hasChoices)
            text += '\t' + item.pageChoice().toUtf8();
        text += '\n';
    }

} // namespace

QByteArray exportText(const FileList::Items& items, const std::function<bool()>& goesOn)
{
    const int count = static_cast<int>(items.size());
    const bool hasChoices = std::ranges::any_of(
        items, [](const FileList::Item& item) { return !item->pageChoice().isEmpty(); });
    std::vector<QByteArray> parts(static_cast<std::size_t>(partsOf(count)));
    inParallel(count, [&](int part, int first, int end) {
        QByteArray& text = parts.at(static_cast<std::size_t>(part));
        text.reserve((end - first) * roomForALine);
        for (int i = first; i < end && goesOn(); ++i)
            appendLine(text, *items.at(i), hasChoices);
    });
    if (!goesOn())
        return {};
    QByteArray text
        = "Name\tPages\tSize\tType\tModified Date\tAccessed Date\tCreated Date\tLocation";
    text += hasChoices ? "\tPages To Convert\n" : "\n";
    for (const QByteArray& part : parts)
        text += part;
    return text;
}

void writeExport(const QString& path, const QByteArray& text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
        throw std::runtime_error(file.errorString().toStdString());
}

} // namespace pagestack
