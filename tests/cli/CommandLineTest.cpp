#include "cli/Console.h"
#include "cli/Options.h"
#include "cli/Progress.h"
#include "engine/options/ConversionOptions.h"
#include "engine/options/PageChoice.h"
#include "engine/sources/FolderWalk.h"
#include "engine/sources/Sources.h"
#include "engine/support/Paths.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"
#include "tests/support/TiffBuilder.h"

#include <fcntl.h>
#include <filesystem>
#include <stdlib.h>
#include <thread>
#include <unistd.h>

namespace {

/// All that a command line can change: "quality=10".
QStringList fields(const Options& options)
{
    QVariantList values;
    values << int(options.conversion.outputType) << options.conversion.jpegQuality
           << int(options.conversion.tiffCompression) << int(options.onExists) << options.jobs
           << int(options.progress) << options.conversion.separator << options.outputFolder
           << options.logFile << options.conversion.isSplit << options.isRecursive
           << !options.leavesLog << options.isQuiet << options.isVerbose << options.wantsHelp
           << options.wantsVersion << options.pathLists.join(u',') << options.sources.join(u',');
    QStringList names = u"format quality compression exists jobs progress separator out log split "
                        "recursive no-log quiet verbose help version lists sources"_s.split(u' ');
    for (qsizetype i = 0; i < names.size(); ++i)
        names[i] += u'=' + values.at(i).toString();
    for (const ConversionOptionRow& row : conversionOptionTable())
        if (!row.label.isEmpty())
            names.append(row.name + u'=' + row.text(options.conversion, row));
    return names;
}

/// The files found, joined by blanks, then the troubles in brackets, then the duplicates.
QString found(const QString& words)
{
    QStringList all;
    const Options options = parseOptions(words.split(u' '));
    const CollectedSources sources
        = collectSources(options.sources, options.pathLists, options.isRecursive);
    for (const Source& source : sources.files) {
        all.append(source.shown);
        if (!std::filesystem::equivalent(source.path.toStdString(), source.shown.toStdString()))
            all.append(u"is not "_s + source.path);
    }
    for (const PathTrouble& trouble : sources.troubles)
        all.append(u"[%1: %2]"_s.arg(trouble.shown, trouble.reason));
    for (const QString& duplicate : sources.duplicates)
        all.append(u"(%1)"_s.arg(duplicate));
    for (const QString& name : sources.leftOut)
        all.append(u"{%1}"_s.arg(name));
    return all.join(u' ');
}

using Stream = std::unique_ptr<std::FILE, decltype([](std::FILE* file) { std::fclose(file); })>;

} // namespace

/// The parts of the command line: options, sources, console.
class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void takesWordsApart_data()
    {
        // The fields that differ from the defaults, or the reason.
        addTextRows(R"(
            a.tif                      | sources=a.tif
            -fgif a                    | format=4 sources=a
            -fTif --format jpG a       | sources=a
            -f tiff --compression packbits --split a | format=2 compression=4 split=true sources=a
            -f tif --split --separator _ a           | format=2 separator=_ split=true sources=a
            --quality 0 a              | quality=0 sources=a
            --jobs 256 a               | jobs=256 sources=a
            --separator== a            | separator== sources=a
            -rvo out a                 | out=out recursive=true verbose=true sources=a
            a -q b  --no-log           | no-log=true quiet=true sources=a,b,
            -f png -f gif --on-exists skip --on-exists overwrite a | format=4 exists=1 sources=a
            -q -- -f -- x              | quiet=true sources=-f,--,x
            b --files-from l.txt - --files-from=- a  | lists=l.txt,-,- sources=b,a
            --log l.xml --progress never --on-exists=skip a |exists=2 progress=2 log=l.xml sources=a
            --quality 3 --preset Web a               | quality=3 sources=a srgb=true
            --preset Web -f png a                    | format=1 quality=8 sources=a srgb=true
            --preset ./Web a           | preset './Web' is no file and none of *
            --expect-dpi 0 a           | expect-dpi '0' is no number from 1 to *
            -f png --bilevel otsu --srgb a  | format=1 sources=a bilevel=otsu srgb=true
            -f tif --bilevel threshold=200 a | format=2 sources=a bilevel=threshold threshold=200
            -f gif --bilevel threshold --threshold 1 a | format=4 sources=a bilevel=threshold threshold=1
            --bilevel dither a         | option --bilevel has no effect with the format jpeg
            -f png --threshold 9 a     | option --threshold has no effect with the format png without *
            -f png --bilevel threshold=256 a | threshold of bilevel '256' is no number from 1 to 255
            -f png --bilevel otsu=7 a  | bilevel 'otsu=7' is none of *
            --fromat png a             | unknown option --fromat
            -rx a                      | unknown option -x
            -f heic a                  | format 'heic' is none of *
            --quality 9 -f png a       | option --quality has no effect with the format png
            --compression none a       | option --compression has no effect with the format jpeg
            --split -fgif a            | option --split has no effect with the format gif
            -f tif --separator _ a | option --separator has no effect with the format tiff without *
            --quality=11 a             | quality '11' is no number from 0 to 10
            --quality=-1 a             | quality '-1' is no number from 0 to 10
            --quality=5.0 a            | quality '5.0' is no number from 0 to 10
            --quality=99999999999 a    | quality '99999999999' is no number from 0 to 10
            a -f                       | option -f needs a value
            --mirror a                 | option --mirror has no effect without --output
            --digits 10 a              | digits '10' is neither auto nor a number from 1 to 9
            --digits 2 -f tif a        | option --digits has no effect with the format tiff *
            --digits 2 --name {page:3} a | option --digits has no effect with a --name without *
            --separator _ --name {n} a | option --separator has no effect with a --name without *
            --name a/{n} a             | name 'a/{n}' holds a slash
            --name {n}{Stem} a         | name '{n}{Stem}' has {Stem}, which is none of {stem} *
            --name {n a                | name '{n' has a '{' without a '}'
            --name n} a                | name 'n}' has a '}' without a '{'
            --name {n:+1} a            | name '{n:+1}' has {n:+1}; digits from 1 to 20 go with *
            --name {sep:2} a           | name '{sep:2}' has {sep:2}; digits from 1 to 20 go with *
            --name .{sep} a            | name '.{sep}' would be empty, '.' or '..'; *
            --name {page} -f tiff a    | name '{page}' would be empty, '.' or '..'; *
            --pages 1,0 a              | pages '1,0' has '0', which is none of 3, 3-5, 3- and -1 *
            --split=yes a              | split 'yes' is none of false*
            --quiet=yes a              | option --quiet takes no value
            --preset Web --srgb=false a              | quality=8 sources=a
            --threshold= -f png a      | the value of option --threshold is empty
            -qv a                      | options -q and -v exclude each other
            -f png                     | no SOURCE is given
            --separator a/b a          | separator 'a/b' holds a slash
            --output= a                | the name of the output folder is empty)");
    }

    void takesWordsApart()
    {
        const auto [words, outcome] = textRow<2>();
        QStringList found;
        try {
            found = fields(parseOptions(words.split(u' ')));
            for (const QString& field : fields({}))
                found.removeOne(field);
        } catch (const UsageError& error) {
            found = QStringList(QString::fromUtf8(error.what()));
        }
        QCOMPARE(withStars(found.join(u' '), outcome), outcome);
    }

    void choosesPages_data()
    {
        // Of a file with six pages; behind "!" what it lacks, "refused" what is no choice.
        addTextRows(R"(
            5,1-2,2,-1     | 1 2 5 6
            3-             | 3 4 5 6
            -2-            | 5 6
            2--2           | 2 3 4 5
            -3--2          | 4 5
            ~6~,~4-5~      | 4 5 6
            ~              | 1 2 3 4 5 6
            5-9,12         | 5 6 ! pages 5-9, page 12 asked for, the file has 6
            -7,-6          | 1 ! page -7 asked for, the file has 6
            5--3           | ! pages 5--3 asked for, the file has 6
            7-             | ! pages 7- asked for, the file has 6
            -9-2           | 1 2 ! pages -9-2 asked for, the file has 6
            999999999,9,9,9,9,9,9 | ! page 999999999, page 9, page 9, page 9, page 9 and 2 more *
            9999999999     | refused
            -              | refused
            --1            | refused
            1,             | refused
            1-2-3          | refused
            2-1            | refused
            -1--2          | refused
            0-2            | refused
            +1             | refused)");
    }

    void choosesPages()
    {
        auto [text, expected] = textRow<2>();
        QStringList found;
        try {
            const PageChoice choice(text.replace(u'~', u' '));
            for (const int page : choice.pages(6))
                found.append(QString::number(page));
            if (const QString missing = choice.missing(6); !missing.isNull())
                found.append(u"! "_s + missing);
        } catch (const OptionError&) {
            found.append(u"refused"_s);
        }
        QCOMPARE(withStars(found.join(u' '), expected), expected);
    }

    void ordersNames()
    {
        for (const char* row :
             { "scan2 scan10 scan10b scanx", "a01 a1 a02 a2", "p1-9 p1-10 p2-1",
               "9 99999999999999999999998 99999999999999999999999", "A B a", "a a. a0" }) {
            const QStringList names = QString::fromLatin1(row).split(u' ');
            for (qsizetype i = 0; i < names.size(); ++i) {
                for (qsizetype j = 0; j < names.size(); ++j)
                    QCOMPARE(naturallyLess(names.at(i), names.at(j)), i < j);
            }
        }
    }

    void collects_data()
    {
        // In brackets what cannot be used, the duplicates and what is left out.
        addTextRows(R"(
            in/         |in/a.TIFF in/b9.tif in/b10.tif in/c.TIF in/d.tiff {in/x.Tif} {in/y.tIFF}
            in in/x.Tif |in/a.TIFF in/b9.tif in/b10.tif in/c.TIF in/d.tiff in/x.Tif {in/y.tIFF}
            -r top           | top/z.tif top/sub/deep/b.tif top/a-link/d.tif
            a.dat .b.tif c.tif | a.dat .b.tif c.tif
            none.tif /dev/null | [none.tif: no such file or folder] [/dev/null: neither a *
            a.dat  lost      | a.dat ['': the path is empty] [lost/b.tif: no such file or folder]
            other/d.tif other ./other//d.tif  | other/d.tif (other/d.tif) (./other//d.tif)
            other/d.tif @/other/d.tif         | other/d.tif (@/other/d.tif)
            other/d.tif far/link/d.tif        | other/d.tif (far/link/d.tif)
            other/d.tif far/link/../other/d.tif | other/d.tif (far/link/../other/d.tif)
            a.dat way/../a.dat                | a.dat way/../a.dat
            a.dat --files-from missing        | a.dat [missing: No such file or directory]
            a.dat ._side.tif ._own.tif        | a.dat ._own.tif
            c.tif --files-from list --files-from list | c.tif a b.tif größe.tif (c.tif))");
    }

    void collects()
    {
        auto [words, expected] = textRow<2>();
        const TestFolder folder;
        folder.make(
            u"in/b10.tif in/b9.tif in/a.TIFF in/c.TIF in/d.tiff in/x.Tif in/y.tIFF in/x.png "
            "in/.hidden.tif in/._a.tif in/xtif in/sub/e.tif top/z.tif top/sub/deep/b.tif "
            "top/.hidden/c.tif top/sub/loop>.. top/sub/again>deep top/a-link>@/other "
            "other/d.tif a.dat .b.tif c.tif>a.dat lost/b.tif>gone far/link>@/other "
            "far/away/ far/a.dat way>far/away a~b.tif größe.tif"_s);
        QVERIFY(QDir::setCurrent(folder.path({})));
        putBytes(u"list"_s, u"\uFEFFa b.tif\r\n\ngröße.tif\nc.tif"_s.toUtf8());
        putBytes(u"._side.tif"_s, QByteArray("\x00\x05\x16\x07\x00\x02", 6));
        putBytes(u"._own.tif"_s, "II*");
        expected.replace(u'@', QDir::currentPath());
        QCOMPARE(withStars(found(words.replace(u'@', QDir::currentPath())), expected), expected);
    }

    // Folders that cannot be looked at are not all the same one.
    void reportsEachFolderThatHasGone()
    {
        const TestFolder folder;
        folder.make(u"a/ b/ c/"_s);
        FolderWalk walk(folder.path({}), FolderWalk::Links::Followed, true,
                        [](const QString&) { return true; });
        const std::optional<FolderWalk::Entry> first = walk.next();
        QVERIFY(first && QDir().rmdir(folder.path(u"b"_s)) && QDir().rmdir(folder.path(u"c"_s)));
        QStringList gone;
        for (auto entry = walk.next(); entry; entry = walk.next())
            if (!entry->fault.isEmpty())
                gone.append(lastPathComponent(entry->path));
        QCOMPARE(gone, (QStringList { u"b"_s, u"c"_s }));
    }

    void drawsProgressOverItselfOnATerminal()
    {
        const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
            QSKIP("the system has no pseudo terminal");
        const Stream output(std::tmpfile());
        const Stream errors(std::fopen(::ptsname(terminal), "w"));
        Console console(output.get(), errors.get());
        QVERIFY(console.isTerminal());
        Progress progress(console, ProgressMode::Auto, 1);
        progress.setDone(0);
        console.showProgress(u"1 left"_s);
        progress.finish();
        console.showProgress(u"2 left"_s);
        console.result(u"a.tif"_s);
        console.showProgress(u"3"_s);
        console.trouble(u"bad"_s);
        QByteArray drawn;
        for (char byte = 0; !drawn.endsWith('\n') && ::read(terminal, &byte, 1) == 1;)
            drawn.append(byte);
        ::close(terminal);
        QCOMPARE(drawn,
                 QByteArray("\r0 of 1 page\r1 left     \r      \r\r2 left\r      \r"
                            "\r3\r \rpagestack-convert: bad\r\n"));
    }

    void waitsForTheReaderOfAStreamThatDoesNot()
    {
        std::array<int, 2> ends {};
        QCOMPARE(::pipe(ends.data()), 0);
        QCOMPARE(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
        const QString line(1'000'000, u'a'); // more than a pipe takes
        std::thread writer([&] {
            const Stream output(::fdopen(ends[1], "w"));
            Console(output.get(), stderr).result(line);
        });
        std::array<char, 4096> part {};
        qsizetype size = 0;
        for (ssize_t got = 0; (got = ::read(ends[0], part.data(), part.size())) > 0;)
            size += got;
        writer.join();
        ::close(ends[0]);
        QCOMPARE(size, line.size() + 1);
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
