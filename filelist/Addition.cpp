#include "filelist/Addition.h"

#include "engine/log/ShownReason.h"

#include <QCoreApplication>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int mostRefusals = 10;

    QString translated(const char* text, int count)
    {
        return QCoreApplication::translate("pagestack::Addition", text, nullptr, count);
    }

} // namespace

void Addition::refuse(const QString& path, const QString& reason)
{
    if (refused++ < mostRefusals)
        refusals.append(path + u": "_s + shownReason(reason));
}

QString Addition::text() const
{
    const int leftOut = notTiff + refused + unreadLines;
    if (added + listed + leftOut + unsearched == 0 && end == End::Reached)
        return {};
    QStringList parts { translated(QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln added"),
                                   added) };
    if (listed > 0)
        parts.append(
            translated(QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln already there"), listed));
    if (leftOut > 0)
        parts.append(
            translated(QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln left out"), leftOut));
    if (added + listed == 0 && unsearched > 0)
        parts.append(
            translated(QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln sub-folder(s) not searched"),
                       unsearched));
    if (end == End::Cancelled)
        parts.append(translated(QT_TRANSLATE_NOOP("pagestack::Addition", "then cancelled"), -1));
    if (end == End::Failed)
        parts.append(
            translated(QT_TRANSLATE_NOOP("pagestack::Addition", "then ended by an error"), -1));
    const QString text = parts.join(u", "_s);
    return refused == 1 ? text + u" - "_s + refusals.first() : text;
}

QString Addition::reasons() const
{
    QStringList lines;
    if (notTiff > 0)
        lines.append(translated(
            QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln file(s) not named .tif or .tiff"),
            notTiff));
    if (unreadLines > 0)
        lines.append(translated(
            QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln line(s) that are no path of a file"),
            unreadLines));
    lines += refusals;
    if (refused > refusals.size())
        lines.append(translated(QT_TRANSLATE_N_NOOP("pagestack::Addition", "and %Ln more"),
                                refused - static_cast<int>(refusals.size())));
    if (unsearched > 0)
        lines.append(
            translated(QT_TRANSLATE_N_NOOP("pagestack::Addition", "%Ln sub-folder(s) not searched"),
                       unsearched));
    return lines.join(u'\n');
}

} // namespace pagestack
