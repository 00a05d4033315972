#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"

#include <QProcess>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

/// Runs the built program in a folder of its own.
class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_process = std::make_unique<QProcess>();
        m_folder = std::make_unique<TestFolder>();
        QVERIFY(QDir::setCurrent(m_folder->path({})));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"LC_ALL"_s, u"C"_s);
        environment.insert(u"XDG_DATA_HOME"_s, m_folder->path(u"data"_s));
        m_process->setProcessEnvironment(environment);
    }

    void runs_data()
    {
        QTest::addColumn<QString>("files");
        QTest::addColumn<QString>("words"); // those after "<" are lines of standard input
        QTest::addColumn<QString>("summary");
        const auto row
            = [](const char* name, const QString& files, const QString& words,
                 const QString& summary) { QTest::newRow(name) << files << words << summary; };
        row("every page", u"in/a.tif:WWW in/b.tif:W"_s, u"-f bmp --separator _ in"_s,
            uR"(in/a.tif: 3 pages written
in/b.tif: 1 page written
Total 4 files converted successfully.
4 pages of 2 sources written
0 LOG in/a_1.bmp in/a_2.bmp in/a_3.bmp in/b_1.bmp)"_s);
        row("a log in place of a source", u"a.tif:W b.tif>a.tif"_s,
            u"-o out --on-exists overwrite --log b.tif a.tif"_s,
            u"! a.tif is a source, which the log would replace\n4"_s);
        row("a log in place of the list", u"a.tif:W list"_s,
            u"a.tif --files-from list --log ./list/"_s,
            u"! text: no such file or folder\n! list is a list of sources, which the log would "
            "replace\n4"_s);
        row("a log that a link puts in place of an output", u"a.tif:W log>a1.jpg"_s,
            u"a.tif --log log"_s,
            u"! a1.jpg is wanted by the log and by a.tif\n! nothing was written; *\n4"_s);
        row("upwards behind a link", u"a.tif:W far/away/ link>far/away"_s,
            u"-q a.tif -o link/../out/ --log link/../log"_s,
            u"0 LOG far/log far/out/ far/out/a1.jpg"_s);
        // 200 or 400 kB, as the shell counts: room for the counters of a coverage build.
        row("a limit of what a file may hold",
            u"a.tif>%1/samples/text-page.tif"_s.arg(qEnvironmentVariable("PAGESTACK_SOURCE_DIR")),
            u"sh ulimit -f 400; exec '%1' -q --no-log -f bmp -o . a.tif"_s,
            u"! a.tif[1]: cannot write: File too large\n1"_s);
        row("no file may be opened", u"a.tif:W"_s, u"sh ulimit -n 6; exec '%1' -q a.tif"_s,
            u"! the system lets the program open too few files (ulimit -n)\n1"_s);
        row("wrong usage", u"a.tif:W"_s, u"--quality 11 a.tif"_s,
            u"! quality '11' is no number from 0 to 10; 'pagestack-convert --help' tells more\n2"_s);
        row("troubles", u"a.tif:WB b.tif c.tif:W"_s, u"none.tif a.tif b.tif c.tif -o out"_s,
            uR"(a.tif: 1 page written, 1 failed
b.tif: 0 pages written
c.tif: 1 page written
Total 2 files converted successfully.
2 pages of 2 sources written, 1 page failed, 2 sources failed
! none.tif: no such file or folder
! a.tif[2]: *
! b.tif: *
1 LOG out/ out/a1.jpg out/c1.jpg)"_s);
        row("a damaged fax row", u"a.tif:WF"_s, u"-q a.tif"_s,
            u"! a.tif[2]: warning: 1 row of the fax is damaged; what is lost of it is white\n"
            "0 a1.jpg a2.jpg LOG"_s);
        row("a missing source", u"a.tif:W"_s, u"-q a.tif none.tif"_s,
            u"! none.tif: no such file or folder\n1 a1.jpg LOG"_s);
        row("a broken page", u"a.tif:B"_s, u"-q a.tif"_s, u"! a.tif[1]: *\n1 LOG"_s);
        row("the system log", u"a.tif:B"_s, u"-v a.tif"_s, uR"(a.tif: 0 pages written, 1 failed
Total 0 files converted successfully.
0 pages of 0 sources written, 1 page failed
! Erorr in (saveAsJpegWithName:) : *
! a.tif[1]: *
1 LOG)"_s);
        row("a broken source", u"a.tif"_s, u"-q a.tif"_s, u"! a.tif: *\n1 LOG"_s);
        row("no source", u"empty/"_s, u"empty no\n\x1B[2J.tif -o out"_s,
            u"! no??[2J.tif: no such file or folder\n! no source found\n3"_s);
        for (const QString& folder : { u"a.tif"_s, u"a.tif/out"_s, u"none/out"_s })
            row(qPrintable(u"output folder "_s + folder), u"a.tif:W"_s, u"a.tif -o "_s + folder,
                u"! output folder %1 *\n4"_s.arg(folder));
        row("new output folder", u"a.tif:WW"_s, u"a.tif -f tiff -o new"_s,
            u"a.tif: 2 pages written\nAll files converted successfully.\n2 pages of 1 source "
            u"written\n"
            "0 LOG new/ new/a.tiff[1/1,2/1]"_s);
        QString targets = u"a2.jpg>nowhere"_s;
        QString reasons = u"! a2.jpg exists already\n"_s;
        for (int page = 3; page <= 14; ++page) {
            targets += u" a%1.jpg"_s.arg(page);
            reasons += page <= 11 ? u"! a%1.jpg exists already\n"_s.arg(page) : QString();
        }
        row("targets that exist", u"b.tif:W a.tif:WWWWWWWWWWWWWW "_s + targets, u"b.tif a.tif"_s,
            reasons + u"! and 3 more\n! nothing was written; *\n4"_s);
        for (const QString& policy : { u"error"_s, u"overwrite"_s, u"skip"_s })
            row(qPrintable(u"a target of two pages, "_s + policy),
                u"x/a.tif:WWWWWWWWWWW y/a1.tif:W"_s, u"-r x y -o out --on-exists "_s + policy,
                u"! out/a11.jpg is wanted by x/a.tif and by y/a1.tif\n! nothing was written; *\n4"_s);
        row("one folder under two names", u"x/a.tif:W x/a.tiff:W link>x"_s,
            u"x/a.tif link/a.tiff"_s,
            u"! link/a1.jpg is wanted by x/a.tif and by link/a.tiff\n! nothing was written; *\n4"_s);
        row("a target that cannot be replaced", u"a.tif:WW b.tif:W out/a.tiff/"_s,
            u"a.tif b.tif -o out -f tiff --on-exists overwrite --compression lzw"_s,
            uR"(a.tif: 0 pages written, 2 failed
b.tif: 1 page written
Total 1 files converted successfully.
1 page of 1 source written, 2 pages failed, 1 source failed
! a.tif: *
1 LOG out/b.tiff[1/5])"_s);
        row("quality",
            u"a.tif>%1/samples/gray-photo.tif"_s.arg(qEnvironmentVariable("PAGESTACK_SOURCE_DIR")),
            u"sh for q in 0 5 10; do '%1' -q --no-log --quality $q -o $q a.tif; wc -c <$q/a1.jpg; done | sort -nuc && rm -r 0 5 10"_s,
            u"0"_s);
        row("numbers", u"x/a.tif:WWWWWWWWWWW y/a1.tif:WW z/a.tif:W out/a1-2.jpg"_s,
            u"-q -r x y z -o out --on-exists number"_s,
            u"0 LOG out/a1-3.jpg out/a1.jpg out/a10.jpg out/a11-2.jpg out/a11.jpg out/a12-2.jpg "
            "out/a2.jpg out/a3.jpg out/a4.jpg out/a5.jpg out/a6.jpg out/a7.jpg out/a8.jpg "
            "out/a9.jpg"_s);
        row("numbers, together", u"a.tif:V a.tiff:WW a-2.tif:W"_s,
            u"-v . -f tiff --on-exists number"_s,
            u"./a-2.tiff\n./a-2.tif: 1 page written\n./a-3.tiff\n./a.tif: 1 page written\n"
            "./a-4.tiff\n./a.tiff: 2 pages written\nAll files converted successfully.\n"
            "4 pages of 3 sources written\n"
            "0 a-2.tiff[1/1] a-3.tiff[101/1] a-4.tiff[1/1,2/1] LOG"_s);
        row("overwrite", u"x/a.tif:WW out/a.tiff:W"_s,
            u"x -q -o out -f tiff --on-exists overwrite"_s, u"0 LOG out/a.tiff[1/1,2/1]"_s);
        row("overwrite a source", u"a.tif:W b.tif:W a1.tiff>b.tif"_s,
            u"-q a.tif b.tif -f tiff --split --on-exists overwrite"_s,
            u"! b.tif is a source and is replaced by output of a.tif\n0 b.tif b1.tiff[1/1] LOG"_s);
        row("skip", u"a.tif:WWW a1.gif>nowhere a2.gif"_s, u"a.tif -f gif --on-exists=skip"_s,
            u"a.tif: 1 page written, 2 skipped\nAll files converted successfully.\n"
            "1 page of 1 source written, 2 pages skipped\n0 a3.gif LOG"_s);
        row("skip, together", u"a.tif:WW a.tiff b.tif:W"_s,
            u"a.tif b.tif -f tiff --on-exists skip"_s,
            u"a.tif: 0 pages written, 2 skipped\nb.tif: 1 page written\nTotal 1 files converted "
            u"successfully.\n"
            "1 page of 1 source written, 2 pages skipped\n0 b.tiff[1/1] LOG"_s);
        row("paths from standard input", u"a~b.tif:W c.tif:W"_s, u"- -q -o . < a~b.tif c.tif"_s,
            u"0 a~b1.jpg c1.jpg LOG"_s);
        row("a list from standard input", u"a.tif:W c.tif:W"_s,
            u"--files-from - -v c.tif < c.tif"_s,
            u"c1.jpg\nc.tif: 1 page written\nAll files converted successfully.\n"
            "1 page of 1 source written\n"
            "! c.tif: named twice, converted once\n0 c1.jpg LOG"_s);
        row("a log elsewhere", u"a.tif:W"_s, u"-q a.tif --no-log --log copy.xml"_s,
            u"0 a1.jpg copy.xml"_s);
        row("no place for the copy of the log", u"a.tif:W"_s,
            u"-q a.tif -o new --log none/copy.xml"_s,
            u"! the log none/copy.xml cannot be written: *\n4"_s);
        row("the log on standard output", u"a.tif:W"_s,
            u"sh '%1' a.tif --no-log --log - | sed -n '1p;$p'"_s, u"<?xml *\n</Log>\n0 a1.jpg"_s);
        row("the log in a pipe", u"a.tif:W"_s,
            u"sh mkfifo pipe; cat pipe >copy & '%1' -q a.tif --no-log --log pipe && wait && tail -n1 copy; rm pipe"_s,
            u"</Log>\n0 a1.jpg copy"_s);
        row("the copy of the log is lost", u"a.tif:W"_s, u"a.tif --no-log --log /dev/full"_s,
            u"a.tif: 1 page written\n1 page of 1 source written\n! /dev/full: *\n1 a1.jpg"_s);
        row("standard output is full", u"a.tif:W"_s, u"sh exec '%1' a.tif --no-log >/dev/full"_s,
            u"! standard output: *\n1 a1.jpg"_s);
        row("so is that of the help", {}, u"sh exec '%1' --help >/dev/full"_s,
            u"! standard output: *\n1"_s);
        // The program's own log is no such promise.
        row("no place for the log", u"a.tif:W data"_s, u"-q a.tif"_s, u"! *\n0 a1.jpg"_s);
        row("an unusual ending", u"in/a.Tif:W in/b.tif:W"_s, u"-q in"_s,
            u"! left out for the unusual case of its ending, unless it is named itself: in/a.Tif\n"
            "0 LOG in/b1.jpg"_s);
        row("a language with other digits", u"a.tif:W"_s,
            u"sh LC_ALL=ar_EG.UTF-8 '%1' -q a.tif --log l; ls data/*/*/Logs | grep -x '[0-9]*.log' "
            u"| "
            u"wc -l; "
            "grep -c 'EndTime=\"[0-9/]* [0-9:]* [AP]M\" Start=\"[-0-9]*T' l; rm -r data"_s,
            u"1\n1\n0 a1.jpg l"_s);
        row("verbose", u"a.tif:WW"_s, u"-v a.tif -o ."_s,
            u"./a1.jpg\n./a2.jpg\na.tif: 2 pages written\nTotal 2 files converted successfully.\n"
            "2 pages of 1 source written\n"
            "0 a1.jpg a2.jpg LOG"_s);
        row("progress", u"a.tif:WW"_s, u"-q a.tif --progress always"_s,
            u"1 of 2 pages, *\n2 of 2 pages\n0 a1.jpg a2.jpg LOG"_s);
        row("a compression that a page cannot have", u"a.tif:WW"_s,
            u"-v a.tif -f tiff --compression g4 --no-log"_s,
            u"a.tiff\na.tif: 2 pages written\nAll files converted successfully.\n"
            "2 pages of 1 source written\n"
            "! a.tif: page 1 is not one bit deep and so is written without compression\n"
            "! a.tif: page 2 is not one bit deep and so is written without compression\n"
            "0 a.tiff[1/1,2/1]"_s);
        row("any name", u"größe~100%~#1?.tif:W"_s, u"größe~100%~#1?.tif --separator ~ü: --no-log"_s,
            u"größe 100% #1?.tif: 1 page written\nAll files converted successfully.\n"
            "1 page of 1 source written\n"
            "0 größe~100%~#1?~ü-1.jpg"_s);
        row("standard output closed", u"a.tif:WW"_s,
            u"sh exec '%1' -v -f tiff --split a.tif >&- 2>&- <&-"_s,
            u"0 a1.tiff[1/1] a2.tiff[2/1] LOG"_s);
        row("reader gone", u"a.tif:"_s + QString(300, u'W'),
            u"sh { '%1' -v --progress always a.tif -o out 2>errors || echo failed >&2; } | head -n "
            u"1; "
            "ls out | wc -l; grep -v ' of 300 ' errors; grep -c ' of 300 ' errors | grep -v "
            "'^..\\?$'; "
            "rm -r out"_s,
            u"out/a1.jpg\n300\npagestack-convert: standard output: Broken pipe; the run goes on\n"
            "failed\n0 LOG errors"_s);
        row("help, version", {}, u"sh '%1' -h >h && '%1' --version >v && head -qn 1 h v"_s,
            u"Examples:\npagestack-convert *\n0 h v"_s);
    }

    void runs()
    {
        QFETCH(const QString, files);
        QFETCH(const QString, words);
        QFETCH(const QString, summary);
        m_folder->make(files);
        QString input = words.section(u" < "_s, 1).replace(u' ', u'\n').replace(u'~', u' ');
        start(words.section(u" < "_s, 0, 0), input.toUtf8());
        QCOMPARE(withStars(this->summary(), summary), summary);
    }

    void refusesFoldersThatAreNotWritable()
    {
        m_folder->make(u"in/a.tif:WWWWWWWWWWWW in/a.tiff:W in/b.tif:W"_s);
        QVERIFY(QFile::setPermissions(m_folder->path({}), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(u"in"_s, QFile::Permissions(0x5555)));
        // Nothing is closed to root.
        m_process->setChildProcessModifier([] {
            constexpr unsigned nobody = 65534;
            if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
                ::_exit(99);
        });
        const QMap<QString, QString> refusals {
            { u"in/a.tif in/b.tif"_s,
              u"! folder @/in is not writable\n! nothing was written; *\n4"_s },
            { u"in/a.tif -o in"_s, u"! output folder in is not writable\n4"_s },
            // Before the sources are looked at, which want one target.
            { u"in/a.tif in/a.tiff -o in/new"_s, u"! output folder in/new cannot be made\n4"_s }
        };
        for (const QString& words : refusals.keys()) {
            start(words);
            if (!m_process->waitForStarted())
                QSKIP("the program cannot be run by another user here");
            const QString refusal = refusals.value(words).replace(u'@', m_folder->path({}));
            QCOMPARE(withStars(summary(), refusal), refusal);
        }
    }

    void finishesThePageAfterASignal()
    {
        for (const int number : { SIGINT, SIGTERM, SIGHUP }) {
            init();
            m_folder->make(u"a.tif:"_s + QString(20000, u'W'));
            start(u"a.tif -o out --log log.xml"_s);
            QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(u"out/a1.jpg"_s), 30000);
            QCOMPARE(::kill(static_cast<pid_t>(m_process->processId()), number), 0);
            const QString found = summary();
            const qsizetype pages = made().size();
            QVERIFY(pages < 20000);
            QVERIFY(found.startsWith(u"a.tif: %1 page"_s.arg(pages)));
            const QString total
                = u"%1 page%2 of 1 source written, %3 pages not reached\n%4 "_s.arg(pages)
                      .arg(pages == 1 ? u""_s : u"s"_s)
                      .arg(20000 - pages)
                      .arg(128 + number);
            QVERIFY2(found.contains(u" written\nProcess cancelled!\n"_s + total),
                     qPrintable(found));
            QVERIFY(found.contains(u" LOG "_s)); // its own, too
            QCOMPARE(made().filter(QRegularExpression(u"^a\\d+\\.jpg$"_s)), made());
            QFile log(u"log.xml"_s);
            QVERIFY(log.open(QIODevice::ReadOnly));
            const QByteArray text = log.readAll();
            QVERIFY(text.startsWith("<?xml "));
            QCOMPARE(text.count("Status=\"Completed\""), pages);
        }
    }

    /// As a shell starts a job in the background, and nohup one that outlives the terminal.
    void ignoresSignalsThatWereIgnoredBefore()
    {
        m_folder->make(u"a.tif:"_s + QString(2000, u'W'));
        m_process->setChildProcessModifier([] {
            std::signal(SIGINT, SIG_IGN);
            std::signal(SIGHUP, SIG_IGN);
        });
        start(u"-q a.tif -o out --no-log"_s);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(u"out/a1.jpg"_s), 30000);
        for (const int number : { SIGINT, SIGHUP })
            QCOMPARE(::kill(static_cast<pid_t>(m_process->processId()), number), 0);
        QVERIFY(summary().startsWith(u"0 "));
        QCOMPARE(made().size(), 2000);
    }

    void endsAtOnceAfterASecondSignal()
    {
        m_folder->make(u"a.tif:H"_s);
        start(u"a.tif -o out"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!made().isEmpty(), 30000);
        // Two signals in quick succession count as one, so that it takes some more.
        do
            QCOMPARE(::kill(static_cast<pid_t>(m_process->processId()), SIGINT), 0);
        while (!m_process->waitForFinished(40));
        QVERIFY(summary().startsWith(u"130 "));
        QVERIFY2(!QFile::exists(u"out/a1.jpg"_s), "a page has its name only when it is complete");
    }

    void preparesAsManyPagesAsItIsTold()
    {
        for (const QString& jobs : { u"1"_s, u"4"_s }) {
            init();
            m_folder->make(u"a.tif:HWWWW"_s); // the others take no time beside the first
            start(u"-q a.tif -o out --no-log --jobs "_s + jobs);
            QTRY_VERIFY_WITH_TIMEOUT(made().size() >= (jobs == u"1" ? 1 : 2), 30000);
            for (int look = 0; look < 10 && jobs == u"1"; ++look) {
                m_process->waitForFinished(20);
                QCOMPARE(made().size(), 1);
            }
            m_process->kill();
            m_process->waitForFinished();
        }
    }

    void leavesTheSourceToNoLogAfterAnEarlySignal()
    {
        m_folder->make(u"a.tif:"_s + QString(5000, u'W'));
        // The first word is told before the pages are counted. Until then a signal ends the
        // program.
        do {
            start(u"none.tif a.tif -o out --log a.tif"_s);
            m_process->setReadChannel(QProcess::StandardError);
            QVERIFY(m_process->waitForReadyRead(30000));
            QCOMPARE(::kill(static_cast<pid_t>(m_process->processId()), SIGINT), 0);
            m_process->waitForFinished(60000);
        } while (m_process->exitStatus() == QProcess::CrashExit);
        QCOMPARE(m_process->exitCode(), 130);
        QCOMPARE(m_folder->changes(), QString());
    }

    void replacesWhatComesDuringTheRunOnlyWhenTold()
    {
        for (const QString& policy : { u"error"_s, u"overwrite"_s }) {
            const bool isKept = policy == u"error";
            init();
            m_folder->make(u"a.tif:"_s + QString(2000, u'W'));
            start(u"-q a.tif -o out --on-exists "_s + policy);
            QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(u"out/a1.jpg"_s), 30000);
            m_folder->make(u"out/a2000.jpg"_s);
            const QString found = summary();
            QVERIFY2(
                found.startsWith(isKept ? u"! a.tif[2000]: a file of that name has appeared during "
                                          "the run\n1 "_s
                                        : u"0 "_s),
                qPrintable(found.left(200)));
            QCOMPARE(QFileInfo(u"out/a2000.jpg"_s).size() == 4, isKept);
        }
    }

    void skipsPagesThatAreGatheredWhenTheirTargetComes()
    {
        m_folder->make(u"a.tif:"_s + QString(4000, u'W'));
        start(u"a.tif -o out -f tiff --on-exists skip"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!made().isEmpty(), 30000);
        m_folder->make(u"out/a.tiff"_s);
        QCOMPARE(summary().section(u'\n', 0, 0), u"a.tif: 0 pages written, 4000 skipped"_s);
    }

    void needsNoThreadOfItsOwn()
    {
#ifdef __SANITIZE_THREAD__
        QSKIP("the thread sanitizer itself needs a thread");
#endif
        // So does the search for leaks at the end.
        QProcessEnvironment environment = m_process->processEnvironment();
        environment.insert(u"ASAN_OPTIONS"_s,
                           u"detect_leaks=0:"_s + environment.value(u"ASAN_OPTIONS"_s));
        m_process->setProcessEnvironment(environment);
        m_folder->make(u"a.tif:WW out/"_s);
        for (const QString& name : { QString(), u"out"_s })
            QVERIFY(QFile::setPermissions(m_folder->path(name), QFile::Permissions(0x7777)));
        // Root may always have another thread.
        m_process->setChildProcessModifier([] {
            constexpr unsigned nobody = 65534;
            const rlimit none {};
            if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
                ::_exit(99);
            ::setrlimit(RLIMIT_NPROC, &none);
        });
        start(u"a.tif -o out --no-log"_s);
        if (!m_process->waitForStarted())
            QSKIP("the program cannot be run by another user here");
        QTRY_COMPARE_WITH_TIMEOUT(m_process->state(), QProcess::NotRunning, 30000);
        QCOMPARE(made(), (QStringList { u"a1.jpg"_s, u"a2.jpg"_s }));
        QCOMPARE(m_process->exitCode(), 0);
    }

private:
    /// '~' stands for a blank in a word; words that begin with "sh" are a shell's.
    void start(const QString& words, const QByteArray& input = {})
    {
        m_folder->remember();
        QStringList arguments = words.split(u' ').replaceInStrings(u"~"_s, u" "_s);
        if (arguments.first() == u"sh")
            m_process->start(u"/bin/sh"_s, { u"-c"_s, words.mid(3).arg(m_program) });
        else
            m_process->start(m_program, arguments);
        m_process->write(input);
        m_process->closeWriteChannel();
    }

    /// Standard output, standard error with "!" for the program's name, then the exit code (-1: it
    /// crashed or did not end) and the changes in the folder, the program's own log being "LOG".
    QString summary()
    {
        m_process->waitForFinished(60000);
        const bool hasEnded = m_process->state() == QProcess::NotRunning
            && m_process->exitStatus() == QProcess::NormalExit;
        const QString output = QString::fromUtf8(m_process->readAllStandardOutput());
        QString errors = QString::fromUtf8(m_process->readAllStandardError());
        errors.replace(QRegularExpression(u"(?m)^pagestack-convert:"_s), u"!"_s);
        // Another user may not write the counters of a coverage build.
        errors.remove(QRegularExpression(u"(?m)^profiling:.*\n"_s));
        QString changes = m_folder->changes();
        changes.replace(QRegularExpression(u"data/ .*/Logs/ data/\\S+\\.log"_s), u"LOG"_s);
        return output + errors
            + u"%1 %2"_s.arg(hasEnded ? m_process->exitCode() : -1).arg(changes).trimmed();
    }

    static QStringList made() { return QDir(u"out"_s).entryList(QDir::Files | QDir::Hidden); }
    const QString m_program = qEnvironmentVariable("PAGESTACK_BIN") + u"/pagestack-convert"_s;
    std::unique_ptr<TestFolder> m_folder;
    std::unique_ptr<QProcess> m_process;
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
