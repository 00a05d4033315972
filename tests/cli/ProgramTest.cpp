#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"
#include "tests/support/TiffBuilder.h"

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
        // Words after "<" are lines of standard input, those after "sh" a shell's.
        addTextRows(R"(
in/a.tif:WWW in/b.tif:W | -f bmp --separator _ in | in/a.tif: 3 pages written \
    / in/b.tif: 1 page written / Total 4 files converted successfully. \
    / 4 pages of 2 sources written / 0 LOG in/a_1.bmp in/a_2.bmp in/a_3.bmp in/b_1.bmp
a.tif:W b.tif>a.tif | -o out --on-exists overwrite --log b.tif a.tif \
    | ! a.tif is a source, which the log would replace / 4
a.tif:W list | a.tif --files-from list --log ./list/ | ! text: no such file or folder \
    / ! list is a list of sources, which the log would replace / 4
a.tif:W b.tif>a.tif | -o out --on-exists overwrite --record b.tif a.tif \
    | ! a.tif is a source, which the record would replace / 4
a.tif:W log>a1.jpg | a.tif --log l --record log \
    | ! a1.jpg is wanted by the record and by a.tif / ! nothing was written; * / 4
a.tif:W | a.tif --log l --record ./l | ! ./l cannot hold both the log and the record / 4
a.tif:W | a.tif --checksums --record SHA256SUMS \
    | ! SHA256SUMS has the name of checksums, which the record would replace / 4
a.tif:W | a.tif -o new --record none/r | ! the record none/r cannot be written: * / 4
a.tif:W | -q a.tif --no-log --record r.json | 0 a1.jpg r.json
a.tif:W | -o new a.tif --report none/r | ! the report none/r cannot be written: * / 4
a.tif:W | a.tif --report a.tif | ! a.tif is a source, which the report would replace / 4
a.tif:W | -q a.tif --no-log --report r.html | 0 a1.jpg r.html
a.tif:W SHA256SUMS | sh '%1' -q a.tif --no-log --checksums 2>o; echo $?; sed 's,.*/,,' o; rm o \
    | 1 / SHA256SUMS: the file is kept as it is, since its line 1 is none of sha256sum / 0 a1.jpg
a.tif:W log>a1.jpg | a.tif --log log \
    | ! a1.jpg is wanted by the log and by a.tif / ! nothing was written; * / 4
a.tif:W far/away/ link>far/away | -q a.tif -o link/../out/ --log link/../log \
    | 0 LOG far/log far/out/ far/out/a1.jpg
a.tif>$SAMPLES/text-page.tif | sh ulimit -f 400; exec '%1' -q --no-log -f bmp -o . a.tif \
    | ! a.tif[1]: cannot write: File too large / 1
a.tif:W | sh ulimit -n 6; exec '%1' -q a.tif \
    | ! the system lets the program open too few files (ulimit -n) / 1
a.tif:W | --jobs=257 a.tif | ! jobs '257' is no number from 0 to 256; * / 2
a.tif:WB b.tif c.tif:W | none.tif a.tif b.tif c.tif -o out | a.tif: 1 page written, 1 failed \
    / b.tif: 0 pages written / c.tif: 1 page written / Total 2 files converted successfully. \
    / 2 pages of 2 sources written, 1 page failed, 2 sources failed \
    / ! none.tif: no such file or folder / ! a.tif[2]: * / ! b.tif: * \
    / 1 LOG out/ out/a1.jpg out/c1.jpg
a.tif:WF | -q a.tif | ! a.tif[2]: warning: 1 row of the fax is damaged; * / 0 a1.jpg a2.jpg LOG
a.tif:B | -v a.tif | a.tif: 0 pages written, 1 failed / Total 0 files converted successfully. \
    / 0 pages of 0 sources written, 1 page failed / ! Erorr in (saveAsJpegWithName:) : * \
    / ! a.tif[1]: * / 1 LOG
a.tif:B | sh for f in jpeg png 'tiff --split --compression lzw' bmp gif; do '%1' -v --no-log a.tif \
    -f $f >o 2>>e; done; grep -o '(save.*) :' e; rm o e | (saveAsJpegWithName:) : \
    / (saveAsPngWithName:) : / (saveAsTiffWithName:) : / (saveAsBmpWithName:) : \
    / (saveAsGifWithName:) : / 0
a.tif:W | a.tif -o a.tif | ! output folder a.tif * / 4
a.tif:W | a.tif -o none/out | ! output folder none/out * / 4
a.tif:WW | -q a.tif -f tiff -o new | 0 LOG new/ new/a.tiff[1/1,2/1]
b.tif:W a.tif:WWWWWWWWWWWW a1.jpg>none a2.jpg a3.jpg a4.jpg a5.jpg a6.jpg a7.jpg a8.jpg a9.jpg \
    a10.jpg a11.jpg a12.jpg | b.tif a.tif | ! a1.jpg exists already / ! a2* / ! a3* / ! a4* \
    / ! a5* / ! a6* / ! a7* / ! a8* / ! a9* / ! a10* / ! and 2 more / ! nothing was written; * / 4
a.tif:WW b.tif:W out/a2.bmp | --dry-run -f bmp -o out a.tif b.tif none.tif --on-exists skip \
    | a.tif[1] -> out/a1.bmp / a.tif[2] -> out/a2.bmp (exists) / b.tif[1] -> out/b1.bmp \
    / 3 pages of 2 sources, nothing was written / ! none.tif: no such file or folder / 1
a.tif:W | --dry-run -f tiff -o new a.tif \
    | a.tif -> new/a.tiff / 1 pages of 1 sources, nothing was written / 0
a.tif:WBWB b.tif c.tif:W | sh '%1' -q --no-log --failed f a.tif b.tif c.tif; sed 's,.*/,,' f; rm f \
    | a.tif	2,4 / b.tif / ! a.tif[2]: * / ! a.tif[4]: * / ! b.tif: * / 0 a1.jpg a3.jpg c1.jpg
a.tif:WB | sh '%1' -q --no-log --failed f -f tiff a.tif; sed 's,.*/,,' f; rm f a.tiff \
    | a.tif / ! a.tif[2]: * / 0
a.tif:B b.tif:W c.tif:B d.tif:W | -q --no-log --max-failures 2 a.tif b.tif c.tif d.tif \
    | ! a.tif[1]: * / ! c.tif[1]: * / ! the run ends here, since 2 sources have failed / 1 b1.jpg
a.tif:W | sh '%1' a.tif --no-log --json >/dev/full | ! standard output: No space * / 1 a1.jpg
a.tif:W | sh '%1' plan a.tif >/dev/full | ! the plan cannot be written: No space left on device / 75
a.tif:W b.tif | sh '%1' plan a.tif b.tif >p; echo $?; grep -c . p; head -c 300 p >q; '%1' run --plan q; \
    rm p q | 1 / 4 / ! b.tif: it is no TIFF file / ! q: it is no plan, or one that is cut off / 0
x/a.tif:W y/a.tif:W | plan x y -o out | ! /* / ! there is no * / 4
x/a.tif:WW x/a1.tiff:W | plan x -f tiff --split \
    | ! /* / ! there is no plan; * / 4
a.tif:WWWWWWWWWW b.tif:W | sh '%1' plan -f bmp -o out a.tif b.tif --name '{n}' >p; for i in 0 1 2; do \
    '%1' run --plan p --shard $i/3 --no-log >o; head -n 1 o; done; rm o p | a.tif: 3 pages written \
    / a.tif: 4 pages written / a.tif: 3 pages written / 0 out/ out/1.bmp out/10.bmp out/11.bmp \
    out/2.bmp out/3.bmp out/4.bmp out/5.bmp out/6.bmp out/7.bmp out/8.bmp out/9.bmp
a.tif:WW b.tif:W | sh '%1' plan a.tif b.tif >p; rm b.tif; '%1' run --plan p --no-log -q; \
    '%1' run --plan p --shard 3/3; '%1' run --plan p b.tif; rm p \
    | ! b.tif: it was planned, and is not there / ! shard index '3' is no number from 0 to 2; * \
    / ! the sources of a run are those of its plan; * / 0 a1.jpg a2.jpg -b.tif
a.tif:W | sh flock s '%1' -q --no-log --resume s a.tif; echo $?; rm s | 75 / ! the state s is * / 0
a.tif:WWW l | sh printf 'a.tif\t3\na.tif\t2\n' >l; '%1' plan --files-from l >p; echo $?; \
    printf 'a.tif\t9\n' >l; '%1' plan --files-from l >p; '%1' run --plan p --no-log -q; echo $?; rm p l \
    | 1 / 1 / ! a.tif: named twice with different pages; * / ! a.tif: page 9 asked for, the file has 3 \
    / ! a.tif: page 9 asked for, the file has 3 / 0 -l
a.tif:WW a1.jpg | sh printf '{"type":"run","format":1,"plan":"","options":"x"}\n' >s; \
    '%1' -q --no-log --resume s a.tif; echo $?; rm s | 4 / ! the state s is that of another plan * / 0
a.tif:WW | sh '%1' plan a.tif -o out >p; chmod 0 a.tif; touch -d 2001-01-01 a.tif; \
    '%1' run --plan p --resume s --no-log -q; echo $?; rm -r out; mkdir out; echo mine >out/a2.jpg; \
    '%1' run --plan p --resume s --no-log -q; echo $?; cat out/a2.jpg; rm p s | 1 / 1 / mine \
    / ! a.tif: it has changed since it was planned / ! a.tif: it has changed since it was planned / 0 out/ out/a2.jpg
a.tif:WW b.tif:W | sh cp a.tif t; '%1' -q --no-log --resume a.tif b.tif; '%1' -q --no-log --failed a.tif a.tif; \
    cmp a.tif t; rm t | ! the state a.tif is none: * / ! a.tif is a source, which the list of failures would replace / 0
a.tif:WW b.tif:W | sh '%1' -q --no-log --resume s --checksums a.tif; rm SHA256SUMS; \
    '%1' -q --no-log --resume s --checksums a.tif b.tif; grep -c . SHA256SUMS; rm s SHA256SUMS | 3 / 0 a1.jpg a2.jpg b1.jpg
a.tif:WWW | sh for i in 1 2; do '%1' -q --no-log --resume s -f tiff --on-exists overwrite a.tif -o .; done; \
    grep -c '"begin"' s; rm s | 1 / 0 a.tiff[1/1,2/1,3/1]
a.tif:WBW | sh '%1' -q --no-log --failed f -f tiff --pages 2-3 a.tif; sed 's,.*/,,' f; rm f a.tiff \
    | a.tif	2-3 / ! a.tif[2]: * / 0
a.tif:WW | sh '%1' -q --no-log --resume s a.tif; rm a2.jpg; mkfifo a2.jpg; \
    '%1' -q --no-log --resume s a.tif; echo $?; rm s a2.jpg | 1 \
    / ! /* / ! a.tif[2]: what is there is no regular file / 0 a1.jpg
a.tif:W | -q --resume /dev/zero a.tif | ! the state /dev/zero is no regular file / 4
a.tif:WB out/a3.jpg | sh for i in 1 2; do '%1' -q --no-log --resume s -o out a.tif; echo $?; done; rm s \
    | 1 / 1 / ! a.tif[2]: * / ! a.tif[2]: * / 0 out/a1.jpg
x/a.tif:WWWWWWWWWWW y/a1.tif:W | -r x y -o out --on-exists overwrite \
    | ! out/a11.jpg is wanted by x/a.tif and by y/a1.tif / ! nothing was written; * / 4
x/a.tif:WWWWWWWWWWW y/a1.tif:W | -r x y -o out --on-exists skip \
    | ! out/a11.jpg is wanted by x/a.tif and by y/a1.tif / ! nothing was written; * / 4
x/a.tif:W x/a.tiff:W link>x | x/a.tif link/a.tiff \
    | ! link/a1.jpg is wanted by x/a.tif and by link/a.tiff / ! nothing was written; * / 4
a.tif:WW b.tif:W out/a.tiff/ | a.tif b.tif -o out -f tiff --on-exists overwrite --compression lzw \
    | a.tif: 0 pages written, 2 failed / b.tif: 1 page written \
    / Total 1 files converted successfully. \
    / 1 page of 1 source written, 2 pages failed, 1 source failed / ! a.tif: * \
    / 1 LOG out/b.tiff[1/5]
x/a.tif:WWWWWWWWWWW y/a1.tif:WW z/a.tif:W out/a1-2.jpg | -q -r x y z -o out --on-exists number \
    | 0 LOG out/a1-3.jpg out/a1.jpg out/a10.jpg out/a11-2.jpg out/a11.jpg out/a12-2.jpg out/a2.jpg \
    out/a3.jpg out/a4.jpg out/a5.jpg out/a6.jpg out/a7.jpg out/a8.jpg out/a9.jpg
a.tif:V a.tiff:WW a-2.tif:W | -q . -f tiff --on-exists number \
    | 0 a-2.tiff[1/1] a-3.tiff[101/1] a-4.tiff[1/1,2/1] LOG
x/a.tif:WW out/a.tiff:W | x -q -o out -f tiff --on-exists overwrite | 0 LOG out/a.tiff[1/1,2/1]
a.tif:W b.tif:W a1.tiff>b.tif | -q a.tif b.tif -f tiff --split --on-exists overwrite \
    | ! b.tif is a source and is replaced by output of a.tif / 0 b.tif b1.tiff[1/1] LOG
a.tif:WWW a1.gif>none a2.gif | a.tif -f gif --on-exists=skip | a.tif: 1 page written, 2 skipped \
    / All files converted successfully. / 1 page of 1 source written, 2 pages skipped / 0 a3.gif LOG
a.tif:WW a.tiff b.tif:W | a.tif b.tif -f tiff --on-exists skip | a.tif: 0 pages written, 2 skipped \
    / b.tif: 1 page written / Total 1 files converted successfully. \
    / 1 page of 1 source written, 2 pages skipped / 0 b.tiff[1/1] LOG
in/a.tif:W in/x/a.tif:W in/x/no/b.tif:B in/link>@/y y/a.tif:W | -q -r in -o out --mirror \
    | ! in/x/no/b.tif[1]: * / 1 LOG out/ out/a1.jpg out/link/ out/link/a1.jpg out/x/ out/x/a1.jpg
in/x/a.tif:WW in/a.tif:W y/ out/x>@/y | -r in -o out --mirror | ! folder * / ! nothing was * / 4
in/a1.jpg/b.tif:W in/a.tif:W | -r in -o out --mirror --on-exists number \
    | ! out/a1.jpg/b1.jpg is wanted by in/a.tif and by in/a1.jpg/b.tif / ! nothing was * / 4
in/x/a.tif:W in/x/y/b.tif:W | - -v -o out --mirror < in/x/a.tif in/x/y/b.tif | out/a1.jpg \
    / in/x/a.tif: 1 page written / out/y/b1.jpg / in/x/y/b.tif: 1 page written \
    / All files converted successfully. / 2 pages of 2 sources written / ! folders are repeated from this one on: * \
    / 0 LOG out/ out/a1.jpg out/y/ out/y/b1.jpg
a.tif:WW b.tif:W | -q a.tif b.tif --name X{n:4} | 0 X0001.jpg X0002.jpg X0003.jpg LOG
a.tif:WW | a.tif --name {stem} | ! a.jpg is wanted by several pages of a.tif; * / ! nothing * / 4
a.tif:WWWWV b.tif:WW | a.tif b.tif -f tiff --pages 4- | a.tif: 2 pages written \
    / b.tif: 0 pages written / Total 1 files converted successfully. \
    / 2 pages of 1 source written, 1 source failed \
    / ! b.tif: pages 4- asked for, the file has 2 / 1 a.tiff[4/1,105/1] LOG
a.tif:WWW | -q a.tif --pages 2- --progress always | 1 of 2 pages, * / 2 of 2 pages / 0 a2.jpg \
    a3.jpg LOG
a.tif:WTWM b.tif:T | -q a.tif b.tif -f tiff --split --skip-reduced | ! b.tif: warning: no page is * \
    / 0 a1.tiff[1/1] a3.tiff[3/1] LOG
a~b.tif:W c.tif:W | - -q -o . < a~b.tif c.tif | 0 a~b1.jpg c1.jpg LOG
a.tif:W c.tif:W | --files-from - -v c.tif < c.tif | c1.jpg / c.tif: 1 page written \
    / All files converted successfully. / 1 page of 1 source written \
    / ! c.tif: named twice, converted once / 0 c1.jpg LOG
a.tif:W | -q a.tif --no-log --log copy.xml | 0 a1.jpg copy.xml
a.tif:W | -q a.tif -o new --log none/copy.xml | ! the log none/copy.xml cannot be written: * / 4
a.tif:W | sh '%1' a.tif --no-log --log - >o; sed -n '1p;$p' o; rm o | <?xml * / </Log> / 0 a1.jpg
a.tif:W | sh mkfifo p; cat p >copy & '%1' -q a.tif --no-log --log p && wait && tail -n1 copy; \
    rm p | </Log> / 0 a1.jpg copy
a.tif:W | a.tif --no-log --log /dev/full \
    | a.tif: 1 page written / 1 page of 1 source written / ! /dev/full: * / 75 a1.jpg
a.tif:W | sh exec '%1' a.tif --no-log >/dev/full | ! standard output: * / 1 a1.jpg
 | sh exec '%1' --help >/dev/full | ! standard output: * / 1
a.tif:W data | -q a.tif | ! * / 0 a1.jpg
in/a.Tif:W in/b.tif:W | -q in | ! left out for the unusual case of its ending, * / 0 LOG in/b1.jpg
a.tif:W | sh LC_ALL=ar_EG.UTF-8 '%1' -q a.tif --log l; ls data/C*/P*/Logs >o; \
    grep -cx '[0-9]*.log' o; grep -c 'EndTime=.[0-9/]* [0-9:]* [AP]M. Start=.[-0-9]*T' l; \
    rm -r o data | 1 / 1 / 0 a1.jpg l
a.tif:WW | -q a.tif --progress always | 1 of 2 pages, * / 2 of 2 pages / 0 a1.jpg a2.jpg LOG
a.tif:WW | -v a.tif -f tiff --compression g4 --no-log | a.tiff / a.tif: 2 pages written \
    / All files converted successfully. / 2 pages of 1 source written \
    / ! a.tif: page 1 is not one bit deep and so is written without compression \
    / ! a.tif: page 2 is not one bit deep and so is written without compression \
    / ! a.tif: warning: 2 pages: written without compression, since * / 0 a.tiff[1/1,2/1]
a.tif:WW | -q a.tif -f tiff --compression g4 --bilevel otsu | 0 a.tiff[-1/4,-1/4] LOG
a.tif:WW | sh touch -d '1999-01-02 03:04:05.678 UTC' a.tif; '%1' -q --no-log --keep-dates a.tif; \
    '%1' -q --no-log --keep-dates -f tiff a.tif; find . -newermt '1999-01-02 03:04:05.677 UTC' \
    ! -newermt '1999-01-02 03:04:05.679 UTC' >o; sort o; rm a1.jpg a2.jpg a.tiff o \
    | ./a.tif / ./a.tiff / ./a1.jpg / ./a2.jpg / 0
a.tif:WW | sh echo old >a1.png; chmod 444 a1.png; \
    '%1' -q --no-log -f png --on-exists overwrite a.tif; c=$?; cat a1.png; rm -f a1.png; exit $c \
    | old / ! a1.png is write-protected and is kept as it is \
    / ! a.tif[1]: the file there is write-protected / 1 a2.png
a.tiff:WW | -q a.tiff -f tiff --bilevel otsu --on-exists overwrite \
    | ! a.tiff: the file is kept as it is, since its pixels would be lost * / 1 LOG
a.tif:WW | sh for j in 1 4; do '%1' -q --no-log --jobs $j a.tif -f png --bilevel dither -o $j; done; \
    diff -r 1 4 && rm -r 1 4 | 0
größe~100%~#1?.tif:W | größe~100%~#1?.tif --separator ~ü: --no-log | größe 100% #1?.tif: 1 page \
    written / All files converted successfully. / 1 page of 1 source written \
    / 0 größe~100%~#1?~ü-1.jpg
a.tif:WW | sh exec '%1' -v -f tiff --split a.tif >&- 2>&- <&- | 0 a1.tiff[1/1] a2.tiff[2/1] LOG
a.tif>$SAMPLES/gray-photo.tif | sh for q in 0 5 10; do '%1' -q --no-log --quality $q -o $q a.tif; \
    wc -c <$q/a1.jpg >>o; done; sort -nuc o && rm -r 0 5 10 o | 0
 | sh '%1' -h >h && '%1' --version >v && head -qn 1 h v \
    | Examples: / pagestack-convert * / 0 h v)");
        QTest::newRow("no source")
            << (QStringList { u"empty/"_s, u"empty no\n\x1B[2J.tif"_s,
                              u"! no??[2J.tif: no such * / ! no source found / 3"_s });
        QTest::newRow("reader gone") << (QStringList {
            u"a.tif:"_s + QString(300, u'W'), uR"(sh {
'%1' -v --progress always a.tif -o out 2>errors || echo failed >&2; } | head -n 1
ls out | wc -l; grep -v ' of 300 ' errors
grep -c ' of 300 ' errors | grep -v '^..\?$'; rm -r out)"_s,
            u"out/a1.jpg / 300 / pagestack-convert: standard output: Broken pipe; the run "
            "goes on / failed / 0 LOG errors"_s });
    }

    void runs()
    {
        auto [files, words, summary] = textRow<3>();
        const QString sources = qEnvironmentVariable("PAGESTACK_SOURCE_DIR");
        m_folder->make(files.replace(u"$SAMPLES"_s, sources + u"/samples"_s));
        QString input = words.section(u" < "_s, 1).replace(u' ', u'\n').replace(u'~', u' ');
        start(words.section(u" < "_s, 0, 0), input.toUtf8());
        QCOMPARE(withStars(this->summary(), summary.replace(u" / "_s, u"\n"_s)), summary);
    }

    void refusesFoldersThatAreNotWritable()
    {
        m_folder->make(u"in/a.tif:WWWWWWWWWWWW in/a.tiff:W in/b.tif:W"_s);
        QVERIFY(QFile::setPermissions(m_folder->path({}), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(u"in"_s, QFile::Permissions(0x5555)));
        for (const auto& [words, refusal] :
             { std::pair(u"in/a.tif in/b.tif"_s,
                         u"! folder %1/in is not writable\n! nothing was written; *\n4"_s),
               std::pair(u"in/a.tif -o in"_s, u"! output folder in is not writable\n4"_s),
               // Before the sources are looked at, which want one target.
               std::pair(u"in/a.tif in/a.tiff -o in/new"_s,
                         u"! output folder in/new cannot be made\n4"_s) }) {
            if (!startAsNobody(words, false)) // nothing is closed to root
                QSKIP("the program cannot be run by another user here");
            const QString expected = QString(refusal).replace(u"%1"_s, m_folder->path({}));
            QCOMPARE(withStars(summary(), expected), expected);
        }
    }

    /// Who may write another's file may not set its date.
    void losesNoPageForItsDate()
    {
        if (::geteuid() != 0)
            QSKIP("only root can be two users");
        for (const auto& [format, name] :
             { std::pair(u"jpg"_s, u"a1.jpg"_s), { u"tiff"_s, u"a.tiff"_s } }) {
            init();
            m_folder->make(u"a.tif:W shut/ out/%1>../shut/%1"_s.arg(name));
            putBytes(u"shut/"_s + name, "old");
            QVERIFY(QFile::setPermissions(u"shut/"_s + name, QFile::Permissions(0x6666)));
            QVERIFY(QFile::setPermissions(u"shut"_s, QFile::Permissions(0x5555)));
            QVERIFY(QFile::setPermissions(m_folder->path({}), QFile::Permissions(0x7755)));
            QVERIFY(QFile::setPermissions(u"out"_s, QFile::Permissions(0x7777)));
            if (!startAsNobody(u"a.tif -q --no-log --keep-dates --on-exists overwrite -o out -f "_s
                                   + format,
                               false))
                QSKIP("the program cannot be run by another user here");
            const QString found = summary();
            QVERIFY2(found.contains(u"the date is not kept"), qPrintable(found));
            QVERIFY(found.contains(u"\n0"_s) && bytesOf(u"shut/"_s + name) != "old");
        }
    }

    void finishesThePageAfterASignal()
    {
        for (const int number : { SIGINT, SIGTERM, SIGHUP }) {
            init();
            QVERIFY(beginLongRun(u"a.tif -o out --log log.xml"_s));
            signalProgram(number);
            const QString found = summary();
            const qsizetype pages = made().size();
            QVERIFY(pages < longRun);
            QVERIFY(found.startsWith(u"a.tif: %1 page"_s.arg(pages)));
            const QString total = u"%1 page%2 of 1 source written, %3 pages not reached\n%4 "_s.arg(
                QString::number(pages), pages == 1 ? u""_s : u"s"_s,
                QString::number(longRun - pages), QString::number(128 + number));
            QVERIFY2(found.contains(u" written\nProcess cancelled!\n"_s + total),
                     qPrintable(found));
            QVERIFY(found.contains(u" LOG "_s)); // its own, too
            QCOMPARE(made().filter(QRegularExpression(u"^a\\d+\\.jpg$"_s)), made());
            const QByteArray log = bytesOf(u"log.xml"_s);
            QVERIFY(log.startsWith("<?xml "));
            QCOMPARE(log.count("Status=\"Completed\""), pages);
        }
    }

    /// As a shell starts a job in the background, and nohup one that outlives the terminal.
    void ignoresSignalsThatWereIgnoredBefore()
    {
        m_process->setChildProcessModifier([] {
            std::signal(SIGINT, SIG_IGN);
            std::signal(SIGHUP, SIG_IGN);
        });
        QVERIFY(beginLongRun(u"-q a.tif -o out --no-log"_s));
        for (const int number : { SIGINT, SIGHUP })
            signalProgram(number);
        QVERIFY(summary().startsWith(u"0 "));
        QCOMPARE(made().size(), longRun);
    }

    void endsAtOnceAfterASecondSignal()
    {
        m_folder->make(u"a.tif:H"_s);
        start(u"a.tif -o out"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!made().isEmpty(), 30000);
        // Two signals in quick succession count as one, so that it takes some more.
        do
            signalProgram(SIGINT);
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
        const QList<TiffEntry> entries { { 256, 1 }, { 257, 1 }, { 258, 8 },
                                         { 262, 1 }, { 273, 8 }, { 279, 1 } };
        putBytes(m_folder->path(u"a.tif"_s), rawTiff({}, entries, oneAfterTheOther(300'000)));
        m_folder->make(u"b.tif:W"_s); // whose pages are not counted any more
        // The first word is told before the pages are counted, which takes a while. Until then a
        // signal ends the program.
        do {
            start(u"none.tif a.tif b.tif -o out --log a.tif --json"_s);
            m_process->setReadChannel(QProcess::StandardError);
            QVERIFY(m_process->waitForReadyRead(30000));
            signalProgram(SIGINT);
            m_process->waitForFinished(60000);
        } while (m_process->exitStatus() == QProcess::CrashExit);
        QCOMPARE(m_process->exitCode(), 130);
        QCOMPARE(m_folder->changes(), QString());
    }

    void replacesWhatComesDuringTheRunOnlyWhenTold()
    {
        const QString last = u"out/a%1.jpg"_s.arg(longRun);
        for (const QString& policy : { u"error"_s, u"overwrite"_s }) {
            const bool isKept = policy == u"error";
            init();
            QVERIFY(beginLongRun(u"-q a.tif -o out --on-exists "_s + policy));
            m_folder->make(last);
            const QString expected = isKept
                ? u"! a.tif[%1]: a file of that name has appeared during the run\n1 "_s.arg(longRun)
                : u"0 "_s;
            QCOMPARE(summary().first(expected.size()), expected);
            QCOMPARE(QFileInfo(last).size() == 4, isKept);
        }
    }

    void skipsPagesThatAreGatheredWhenTheirTargetComes()
    {
        m_folder->make(u"a.tif:WHW"_s);
        start(u"a.tif -o out -f tiff --compression lzw --on-exists skip"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!made().isEmpty(), 30000);
        m_folder->make(u"out/a.tiff"_s);
        QCOMPARE(summary().section(u'\n', 0, 0), u"a.tif: 0 pages written, 3 skipped"_s);
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
        if (!startAsNobody(u"a.tif -o out --no-log"_s, true)) // root may always have another thread
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

    /// Begins a run on a.tif, whose many pages take longer than what is done to it meanwhile;
    /// whether it has come to its first image.
    bool beginLongRun(const QString& words)
    {
        m_folder->make(u"a.tif:"_s + QString(longRun, u'W'));
        start(words);
        return QTest::qWaitFor([] { return QFile::exists(u"out/a1.jpg"_s); }, 30000);
    }

    void signalProgram(int number) const
    {
        QCOMPARE(::kill(static_cast<pid_t>(m_process->processId()), number), 0);
    }

    bool startAsNobody(const QString& words, bool hasOneThread)
    {
        m_process->setChildProcessModifier([hasOneThread] {
            constexpr unsigned nobody = 65534;
            const rlimit none {};
            if ((::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
                || (hasOneThread && ::setrlimit(RLIMIT_NPROC, &none) != 0))
                ::_exit(99);
        });
        start(words);
        return m_process->waitForStarted();
    }

    /// Standard output, standard error with "!" for the program's name, then the exit code (-1: it
    /// crashed or did not end) and the changes in the folder, the program's own log being "LOG".
    QString summary()
    {
        m_process->waitForFinished(200000); // a page of 200 MB, sanitized
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

    static constexpr int longRun = 1000; // pages
    static QStringList made() { return QDir(u"out"_s).entryList(QDir::Files | QDir::Hidden); }
    const QString m_program = qEnvironmentVariable("PAGESTACK_BIN") + u"/pagestack-convert"_s;
    std::unique_ptr<TestFolder> m_folder;
    std::unique_ptr<QProcess> m_process;
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
