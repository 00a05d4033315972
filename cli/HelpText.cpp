#include "cli/HelpText.h"

#include "cli/OptionTable.h"
#include "engine/image/CodecVersions.h"
#include "engine/support/Info.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype lineWidth = 80;
    constexpr qsizetype meaningColumn = 8;

    QString wrapped(const QString& text)
    {
        const QString indent(meaningColumn, u' ');
        QString lines;
        QString line;
        for (const QString& word : text.split(u' ')) {
            if (!line.isEmpty() && indent.size() + line.size() + 1 + word.size() > lineWidth) {
                lines += indent + line + u'\n';
                line.clear();
            }
            line += line.isEmpty() ? word : u' ' + word;
        }
        return lines + indent + line + u'\n';
    }

    QString described(const OptionRow& row)
    {
        const QString shortForm = row.shortName ? u"-%1, "_s.arg(QChar(row.shortName)) : QString();
        const QString value = row.takesValue() ? u' ' + row.value : QString();
        return u"  "_s + shortForm + u"--"_s + row.longName + value + u'\n'
            + wrapped(row.isFor(Command::Convert) ? row.meaning
                                                  : u"(%1) "_s.arg(commandsOf(row)) + row.meaning);
    }

} // namespace

QString helpText()
{
    QString text = uR"(Examples:
  pagestack-convert scan.tif
        every page as scan1.jpg, scan2.jpg ... beside scan.tif
  pagestack-convert -f png --separator _ -o out scans
        the TIFF files of the folder scans, pages as out/NAME_1.png ...
  pagestack-convert -f tiff --compression g4 -o out -r archive
        one fax-compressed TIFF a source, sub-folders included
  find . -name '*.tif' | pagestack-convert --on-exists skip -o out -
        the paths that another program prints, without replacing anything

Usage: pagestack-convert [options] SOURCE...
       pagestack-convert COMMAND [options] ...

A SOURCE is a TIFF file, or a folder: its files that end in .tif, .TIF, .tiff or
.TIFF. Hidden files are left out. '--' ends the options.

Commands (a source of such a name is given as ./NAME):
)"_s;
    for (const CommandName& name : commandNames())
        text += u"  %1 %2\n"_s.arg(name.word, name.operands) + wrapped(name.meaning);
    text += u"\nOptions:\n"_s;
    for (const OptionRow& row : optionTable())
        text += described(row);
    return text + uR"(
Exit codes:
  0  everything was written    3  no source was found
  1  some page or file failed  4  output refused, nothing was written
  2  wrong usage
  75  some failed by what may pass, such as a full disk: worth another try
  129, 130, 143  cancelled by SIGHUP, SIGINT, SIGTERM
)"_s;
}

QString versionText()
{
    QStringList lines { u"pagestack-convert "_s + version.toString() };
    lines += codecVersions();
    lines += u"Qt "_s + QLatin1StringView(qVersion());
    return lines.join(u'\n') + u'\n';
}

} // namespace pagestack
