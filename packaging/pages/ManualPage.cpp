#include "packaging/pages/ManualPage.h"

#include "cli/OptionTable.h"
#include "engine/support/Application.h"
#include "engine/support/Info.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// A text as roff takes it: hyphens that are typed, and no control line by chance.
    QString roff(QString text)
    {
        text.replace(getAppPath(), u"~/.local/share/Corvanta/Pagestack1"_s);
        text.replace(u'\\', u"\\e"_s).replace(u'-', u"\\-"_s).replace(u'\'', u"\\(aq"_s);
        return text.startsWith(u'.') ? u"\\&"_s + text : text;
    }

    QString described(const OptionRow& row)
    {
        QString names = u"\\fB\\-\\-"_s + roff(row.longName) + u"\\fR"_s;
        if (row.shortName != 0)
            names = u"\\fB\\-"_s + QChar(row.shortName) + u"\\fR, "_s + names;
        if (row.takesValue())
            names += u" \\fI"_s + roff(row.value) + u"\\fR"_s;
        const QString where
            = row.isFor(Command::Convert) ? QString() : u"("_s + roff(commandsOf(row)) + u") "_s;
        return u".TP\n"_s + names + u'\n' + where + roff(row.meaning) + u".\n"_s;
    }

} // namespace

QString manualPage()
{
    QString page = uR"(.TH PAGESTACK\-CONVERT 1 "" "Pagestack %1" "User Commands"
.SH NAME
pagestack\-convert \- turn TIFF files into JPEG, PNG, TIFF, BMP or GIF
.SH SYNOPSIS
.B pagestack\-convert
.RI [ options ] " SOURCE" ...
.br
.B pagestack\-convert
.I COMMAND
.RI [ options ] " " ...
.SH DESCRIPTION
Writes every page of the sources as an image of its own, or, as TIFF, the pages of each source together.
A
.I SOURCE
is a TIFF file, or a folder: its files that end in .tif, .TIF, .tiff or .TIFF.
Hidden files are left out.
.B \-\-
ends the options.
.PP
An output is called as its source, with the separator, the page number and the extension behind, and
lies beside the source or in the folder that
.B \-\-output
names.
Nothing is overwritten unasked.
.PP
Results go to standard output, the last line being the sum; troubles go to standard error, a line each,
with the source and the page.
What is wrong with one page does not end the run.
Exit code 0 with nothing on standard error means that no page was lost or altered.
.SH COMMANDS
A command is the first word; a source of such a name is given as
.IR ./NAME .
)"_s.arg(version);
    for (const CommandName& name : commandNames())
        page += u".TP\n\\fB%1\\fR \\fI%2\\fR\n%3.\n"_s.arg(roff(name.word), roff(name.operands),
                                                           roff(name.meaning));
    page += u".SH OPTIONS\n"_s;
    for (const OptionRow& row : optionTable())
        page += described(row);
    return page + uR"(.SH EXIT STATUS
.TP
.B 0
Everything was written.
.TP
.B 1
A page or a file failed, or the results or the log could not be written.
.TP
.B 2
Wrong usage, or an option without effect.
.TP
.B 3
No source was found.
.TP
.B 4
The output was refused; nothing was written.
.TP
.B 75
As 1, but something failed that may pass, such as a full disk, an error of input or output or want of memory:
another try is worth it.
.TP
.BR 129 ", " 130 ", " 143
The run was ended by SIGHUP, SIGINT or SIGTERM; what was written stays.
.SH FILES
.TP
.I ~/.local/share/Corvanta/Pagestack1/Logs
The XML log of each run, unless
.B \-\-no\-log
is given.
.TP
.I ~/.config/Corvanta
The settings of the window, with its presets.
.SH EXAMPLES
.TP
.B pagestack\-convert scan.tif
Every page as scan1.jpg, scan2.jpg ... beside scan.tif.
.TP
.B pagestack\-convert \-f png \-\-separator _ \-o out scans
The TIFF files of the folder scans, pages as out/NAME_1.png ...
.TP
.B pagestack\-convert \-f tiff \-\-compression g4 \-o out \-r archive
One fax\-compressed TIFF a source, sub\-folders included.
.TP
.B find . \-name \(aq*.tif\(aq | pagestack\-convert \-\-on\-exists skip \-o out \-
The paths that another program prints, without replacing anything.
.SH SEE ALSO
.BR pagestack (1),
.BR tiffinfo (1)
)"_s;
}

} // namespace pagestack
