#include "cli/Console.h"
#include "cli/Options.h"
#include "cli/Progress.h"
#include "engine/sources/FolderWalk.h"
#include "engine/sources/Sources.h"
#include "engine/support/Paths.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"

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
    values << int(options.outputType) << options.jpegQuality << int(options.tiffCompression)
           << int(options.onExists) << options.jobs << int(options.progress) << options.separator
           << options.outputFolder << options.logFile << options.isSplit << options.isRecursive
           << !options.leavesLog << options.isQuiet << options.isVerbose << options.wantsHelp
           << options.wantsVersion << options.pathLists.join(u'|') << options.sources.join(u'|');
    QStringList names = u"format quality compression exists jobs progress separator out log split "
                        "recursive no-log quiet verbose help version lists sources"_s.split(u' ');
    for (qsizetype i = 0; i < names.size(); ++i)
        names[i] += u'=' + values.at(i).toString();
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
        QTest::addColumn<QString>(
            "outcome"); // the fields that differ from the defaults, or the reason
        const auto row
            = [](const char* words, const QString& outcome) { QTest::newRow(words) << outcome; };
        row("a.tif", u"sources=a.tif"_s);
        row("-f png a", u"format=1 sources=a"_s);
        row("-fgif a", u"format=4 sources=a"_s);
        row("--format=bmp a", u"format=3 sources=a"_s);
        row("--format tiff --compression packbits --split a",
            u"format=2 compression=4 split=true sources=a"_s);
        row("--quality 0 a", u"quality=0 sources=a"_s);
        row("--separator - a", u"separator=- sources=a"_s);
        row("--separator== a", u"separator== sources=a"_s);
        row("--separator= a", u"sources=a"_s);
        row("-rvo out a", u"out=out recursive=true verbose=true sources=a"_s);
        row("a -q b  --no-log", u"no-log=true quiet=true sources=a|b|"_s);
        row("-f png -f gif --on-exists skip --on-exists overwrite a",
            u"format=4 exists=1 sources=a"_s);
        row("-q -- -f -- x", u"quiet=true sources=-f|--|x"_s);
        row("b --files-from l.txt - --files-from=- a", u"lists=l.txt|-|- sources=b|a"_s);
        row("--log l.xml --progress never --on-exists=skip a",
            u"exists=2 progress=2 log=l.xml sources=a"_s);
        row("-h", u"help=true"_s);
        row("--version", u"version=true"_s);
        row("--fromat png a", u"unknown option --fromat"_s);
        row("-rx a", u"unknown option -x"_s);
        row("--form png a", u"unknown option --form"_s);
        row("-f PNG a", u"format=1 sources=a"_s);
        row("-fTif --format jpG a", u"sources=a"_s);
        row("-f heic a", u"format 'heic' is none of jpeg|png|tiff|bmp|gif"_s);
        row("--quality 9 -f png a", u"option --quality has no effect with the format png"_s);
        row("--compression none a", u"option --compression has no effect with the format jpeg"_s);
        row("--split -fgif a", u"option --split has no effect with the format gif"_s);
        row("-f tif --separator _ a",
            u"option --separator has no effect with the format tiff without --split"_s);
        row("-f tif --split --separator _ a", u"format=2 separator=_ split=true sources=a"_s);
        row("-f jpeg|png a", u"format 'jpeg|png' is none of jpeg|png|tiff|bmp|gif"_s);
        for (const char* number : { "11", "-1", "5.0", "99999999999", "" })
            row(("--quality=" + QByteArray(number) + " a").constData(),
                u"quality '%1' is no number from 0 to 10"_s.arg(QString::fromLatin1(number)));
        row("--jobs 256 a", u"jobs=256 sources=a"_s);
        for (const char* number : { "257", "-2", "two", "" })
            row(("--jobs=" + QByteArray(number) + " a").constData(),
                u"jobs '%1' is no number from 0 to 256"_s.arg(QString::fromLatin1(number)));
        row("a -f", u"option -f needs a value"_s);
        row("a --log", u"option --log needs a value"_s);
        row("--split=yes a", u"option --split takes no value"_s);
        row("-qv a", u"options -q and -v exclude each other"_s);
        row("-f png", u"no SOURCE is given"_s);
        row("--separator a/b a", u"separator 'a/b' holds a slash"_s);
        row("--output= a", u"the name of the output folder is empty"_s);
    }

    void takesWordsApart()
    {
        QStringList found;
        try {
            found = fields(parseOptions(QString::fromLatin1(QTest::currentDataTag()).split(u' ')));
            for (const QString& field : fields({}))
                found.removeOne(field);
        } catch (const UsageError& error) {
            found = QStringList(QString::fromUtf8(error.what()));
        }
        QTEST(found.join(u' '), "outcome");
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
        QTest::addColumn<QString>("files");
        QTest::addColumn<QString>("expected");
        QTest::newRow("in/")
            << u"in/b10.tif in/b9.tif in/a.TIFF in/c.TIF in/d.tiff in/x.Tif in/x.png "
               "in/.hidden.tif in/._a.tif in/xtif in/sub/e.tif"_s
            << u"in/a.TIFF in/b9.tif in/b10.tif in/c.TIF in/d.tiff {in/x.Tif}"_s;
        QTest::newRow("in in/x.Tif")
            << u"in/x.Tif in/y.tIFF in/z.tifx"_s << u"in/x.Tif {in/y.tIFF}"_s;
        QTest::newRow("-r in") << u"in/z.tif in/sub/deep/b.tif in/.hidden/c.tif other/d.tif "
                                  "in/sub/loop>.. in/sub/again>deep in/a-link>@/other"_s
                               << u"in/z.tif in/sub/deep/b.tif in/a-link/d.tif"_s;
        QTest::newRow("a.dat .b.tif c.tif")
            << u"a.dat .b.tif c.tif>a.dat"_s << u"a.dat .b.tif c.tif"_s;
        // The words hold an empty one.
        QTest::newRow("none.tif  /dev/null in")
            << u"in/a.tif in/b.tif>gone"_s
            << u"in/a.tif [none.tif: no such file or folder] ['': the path is empty] [/dev/null: "
               "neither a regular file nor a folder] [in/b.tif: no such file or folder]"_s;
        QTest::newRow("in/a.tif in ./in//a.tif @/in/a.tif link/a.tif link/../in/a.tif")
            << u"in/a.tif link>in"_s
            << u"in/a.tif (in/a.tif) (./in//a.tif) (@/in/a.tif) (link/a.tif) (link/../in/a.tif)"_s;
        QTest::newRow("a.tif link/../a.tif")
            << u"far/away/ far/a.tif a.tif link>far/away"_s << u"a.tif link/../a.tif"_s;
        QTest::newRow("c.tif --files-from list --files-from list --files-from missing")
            << u"a~b.tif größe.tif c.tif"_s
            << u"c.tif a b.tif größe.tif [none.tif: no such file or folder] "
               "[missing: No such file or directory] (c.tif)"_s;
    }

    void collects()
    {
        QFETCH(const QString, files);
        QFETCH(QString, expected);
        QString words = QString::fromLatin1(QTest::currentDataTag());
        const TestFolder folder;
        folder.make(files);
        QVERIFY(QDir::setCurrent(folder.path({})));
        QFile list(u"list"_s);
        QVERIFY(list.open(QIODevice::WriteOnly));
        QVERIFY(list.write(u"\uFEFFa b.tif\r\n\ngröße.tif\nnone.tif\nc.tif"_s.toUtf8()) > 0);
        list.close();
        QCOMPARE(found(words.replace(u'@', QDir::currentPath())),
                 expected.replace(u'@', QDir::currentPath()));
    }

    // Folders that cannot be looked at are not all the same one.
    void reportsEachFolderThatHasGone()
    {
        const TestFolder folder;
        folder.make(u"a/ b/ c/"_s);
        FolderWalk walk(folder.path({}), FolderWalk::Order::Natural, true);
        const std::optional<FolderWalk::Entry> first = walk.next();
        QVERIFY(first && QDir().rmdir(folder.path(u"b"_s)) && QDir().rmdir(folder.path(u"c"_s)));
        QStringList gone;
        for (auto entry = walk.next(); entry; entry = walk.next())
            if (!entry->fault.isEmpty())
                gone.append(lastPathComponent(entry->path));
        QCOMPARE(gone, (QStringList { u"b"_s, u"c"_s }));
    }

    // Not with QFile, which cannot make such a name.
    void reportsANameThatIsNoText()
    {
        const TestFolder folder;
        QVERIFY(QDir::setCurrent(folder.path({})));
        std::FILE* file = std::fopen("sch\xFCn.tif", "w");
        if (!file)
            QSKIP("the file system takes UTF-8 names only");
        std::fclose(file);
        const QString all = found(u"."_s);
        std::remove("sch\xFCn.tif");
        QCOMPARE(all, u"[./sch\uFFFDn.tif: the name is no UTF-8 text]"_s);
    }

    void tellsTheTimeLeft()
    {
        QCOMPARE(progressText(0, 10, 500), u"0 of 10 pages"_s);
        QCOMPARE(progressText(5, 10, 6001), u"5 of 10 pages, 0:07 left"_s);
        QCOMPARE(progressText(1, 11, 6500), u"1 of 11 pages, 1:05 left"_s);
        QCOMPARE(progressText(1, 62, 61000), u"1 of 62 pages, 1:02:01 left"_s);
        QCOMPARE(progressText(1, 1, 500), u"1 of 1 page"_s);
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
        console.trouble(u"bad"_s);
        QByteArray drawn;
        for (char byte = 0; !drawn.endsWith('\n') && ::read(terminal, &byte, 1) == 1;)
            drawn.append(byte);
        ::close(terminal);
        QCOMPARE(drawn,
                 QByteArray("\r0 of 1 page\r1 left     \r      \r\r2 left\r      "
                            "\rpagestack-convert: bad\r\n"));
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
