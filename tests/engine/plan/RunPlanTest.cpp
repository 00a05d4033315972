#include "engine/plan/RunPlan.h"

#include "tests/engine/job/JobFixture.h"
#include "tests/support/Testing.h"

#include <cstdarg>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __linux__
namespace {

/// In a folder "case" names lead to the file with the name in lower case, and in a folder "form" to
/// that with the decomposed name, as on file systems that overlook the difference.
QByteArray real(const char* path)
{
    const QByteArray bytes(path);
    const qsizetype slash = bytes.lastIndexOf('/') + 1;
    QString name = QString::fromUtf8(bytes.mid(slash));
    if (bytes.left(slash).endsWith("/case/"))
        name = name.toLower();
    if (bytes.left(slash).endsWith("/form/"))
        name = name.normalized(QString::NormalizationForm_D);
    return bytes.left(slash) + name.toUtf8();
}

} // namespace

// The calls that the plan makes, in place of those of the system's library.
extern "C" {
int foldingOpen(const char* path, int flags, ...) __asm__("open");
int foldingStat(const char* path, struct stat* found) __asm__("stat");
int foldingLstat(const char* path, struct stat* found) __asm__("lstat");
int foldingUnlink(const char* path) __asm__("unlink");

int foldingOpen(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return ::openat(AT_FDCWD, real(path).constData(), flags, mode);
}
int foldingStat(const char* path, struct stat* found)
{
    return ::fstatat(AT_FDCWD, real(path).constData(), found, 0);
}
int foldingLstat(const char* path, struct stat* found)
{
    return ::fstatat(AT_FDCWD, real(path).constData(), found, AT_SYMLINK_NOFOLLOW);
}
int foldingUnlink(const char* path) { return ::unlinkat(AT_FDCWD, real(path).constData(), 0); }
}
#endif

namespace {

/// Below the output folder.
QString path(const RunPlan& plan, const PlannedTarget& target)
{
    return joinedPath(plan.outputs().at(target.output).subfolder, plan.name(target));
}

/// The names of the outputs, those of a source in brackets.
QString names(const RunPlan& plan, const Settings& settings)
{
    QStringList all;
    for (qsizetype output = 0; output < plan.outputs().size(); ++output) {
        QStringList pages;
        for (const int page : plan.outputs().at(output).pages)
            pages.append(path(plan, { output, isKeptTogether(settings) ? 0 : page }));
        all.append(u'[' + pages.join(u' ') + u']');
    }
    return all.join(u' ');
}

/// What was found, outputs being counted from 0: "a1.png of 1 and 0".
QString findings(const RunPlan& plan)
{
    QStringList found;
    for (const auto& [target, first] : plan.shared())
        found.append(u"%1 of %2 and %3"_s.arg(path(plan, target)).arg(target.output).arg(first));
    for (const auto& [target, source] : plan.replacedSources())
        found.append(u"%1 for source %2"_s.arg(path(plan, target)).arg(source));
    for (const PlannedTarget& target : plan.existing())
        found.append(u"%1 exists"_s.arg(path(plan, target)));
    return found.join(u", "_s);
}

} // namespace

class RunPlanTest : public QObject
{
    Q_OBJECT

private slots:
    void findsWhatARunComesUpon_data()
    {
        QTest::addColumn<QStringList>("texts");
        // Names when those that clash are numbered; the same, when all that would replace a file
        // are.
        const auto row
            = [](const char* name, const QString& sources, const QString& changes,
                 const QString& found, const QString& clashing, const QString& taken = {}) {
                  QTest::newRow(name) << QStringList { sources, changes, found, clashing,
                                                       taken.isNull() ? clashing : taken };
              };
        row("one name each", u"a.tif:WW c.tif:W b.tif"_s, {}, {}, u"[a1.png a2.png] [c1.png] []"_s);
        // Who comes later gives way, but not to the number of another.
        row("one name", u"x/a.tif:W y/a.tif:WW a1-.tif:WW z/a.tif:WW"_s, {},
            u"a1.png of 1 and 0, a1.png of 3 and 0, a2.png of 3 and 1"_s,
            u"[a1.png] [a1-3.png a2-3.png] [a1-1.png a1-2.png] [a1-4.png a2-4.png]"_s);
        row("one name, together, beside what exists", u"x/a.tif:W y/a.tif:W y/a.tiff:W"_s,
            u"outputType=2 out/a.tiff out/a-2.tiff"_s,
            u"a.tiff of 1 and 0, a.tiff of 2 and 0, a.tiff exists, a.tiff exists, a.tiff exists"_s,
            u"[a.tiff] [a-3.tiff] [a-4.tiff]"_s, u"[a-3.tiff] [a-4.tiff] [a-5.tiff]"_s);
        row("another source is replaced, by a link too", u"a.tif:W b.tif:W a1.tiff:W"_s,
            u"outputType=2 isSplitTIFFIntoSinglePages=true outputFolderPath= in/b1.tiff>a.tif"_s,
            u"a1.tiff for source 2, b1.tiff for source 0, a1.tiff exists, b1.tiff exists"_s,
            u"[a1-2.tiff] [b1-2.tiff] [a11.tiff]"_s);
        row("one file by links", u"a.tif:WWWW b.tif:W"_s,
            u"out/a2.png>a3.png out/b1.png>@/more/a1.png more>out"_s,
            u"a3.png of 0 and 0, b1.png of 1 and 0, a2.png exists, b1.png exists"_s,
            u"[a1-2.png a2-2.png a3-2.png a4-2.png] [b1.png]"_s,
            u"[a1-2.png a2-2.png a3-2.png a4-2.png] [b1-2.png]"_s);
        row("a folder by a link", u"x/a.tif:W y/a.tif:W"_s,
            u"outputFolderPath= in/y/a1.png>../x/a1.png"_s, u"a1.png of 1 and 0, a1.png exists"_s,
            u"[a1.png] [a1-2.png]"_s);
        row("mirrored folders", u"x/a.tif:W x/y/a.tif:W x/b.tif:W xy/a.tif:W"_s,
            u"mirror=true out/x/b1.png"_s, u"x/b1.png exists"_s,
            u"[x/a1.png] [x/y/a1.png] [x/b1.png] [xy/a1.png]"_s,
            u"[x/a1.png] [x/y/a1.png] [x/b1-2.png] [xy/a1.png]"_s);
        row("no folder to mirror in", u"x/a.tif:W y/a.tif:W"_s, u"mirror=true outputFolderPath="_s,
            {}, u"[a1.png] [a1.png]"_s);
        row("digits", u"a.tif:WWWWWWWWWW b.tif:W"_s, u"digits=auto"_s, {},
            u"[a01.png a02.png a03.png a04.png a05.png a06.png a07.png a08.png a09.png a10.png] "
            "[b1.png]"_s);
        row("running numbers", u"a.tif:WW c.tif b.tif:W"_s,
            u"name=A{n:3}-{page}of{pages:2} digits=2"_s, {},
            u"[A001-01of02.png A002-02of02.png] [] [A003-01of01.png]"_s);
        row("running numbers of whole files", u"a.tif:WW c.tif b.tif:W"_s,
            u"outputType=2 name={n}{sep}{page}_{stem} separator=."_s, {},
            u"[1_a.tiff 1_a.tiff] [] [2_b.tiff]"_s);
        row("chosen pages", u"a.tif:WWWW b.tif:W c.tif:TWM"_s, u"pages=-1,2- name={page}-{n}"_s, {},
            u"[2-1.png 3-2.png 4-3.png] [1-4.png] [2-5.png 3-6.png]"_s);
        row("without thumbnails and masks", u"a.tif:TWMW b.tif:T"_s,
            u"skip-reduced=true outputType=2 name={stem}{n}"_s, {}, u"[a1.tiff a1.tiff] []"_s);
        row("folders in names", u"x/a.tif:W y/a.tif:W"_s,
            u"name={parent}.{folder}{sep} separator=:"_s, {}, u"[in.x-.png] [in.y-.png]"_s);
        row("a folder that is still to be made", u"x/a.tif:W y/a.tif:W"_s,
            u"outputFolderPath=new"_s, u"a1.png of 1 and 0"_s, u"[a1.png] [a1-2.png]"_s);
#ifdef __linux__
        row("case", u"a.tif:W A.tif:W \u00e4.tif:W a\u0308.tif:W"_s,
            u"outputFolderPath=case case/"_s, u"A1.png of 1 and 0"_s,
            u"[a1.png] [A1-2.png] [\u00e41.png] [a\u03081.png]"_s);
        row("case of folders to be made", u"x/a.tif:W X/a.tif:W y/a.tif:W"_s,
            u"mirror=true outputFolderPath=case case/"_s, u"X/a1.png of 1 and 0"_s,
            u"[x/a1.png] [X/a1-2.png] [y/a1.png]"_s);
        row("normalization", u"\u00e4.tif:W a\u0308.tif:W a.tif:W A.tif:W"_s,
            u"outputFolderPath=form form/"_s, u"a\u03081.png of 1 and 0"_s,
            u"[\u00e41.png] [a\u03081-2.png] [a1.png] [A1.png]"_s);
#endif
    }

    void findsWhatARunComesUpon()
    {
        const auto [sources, changes, found, clashing, taken] = textRow<5>();
        JobFixture fixture(sources, changes);
        fixture.folder.remember();
        const auto planned = [&](RunPlan::Numbering numbering) {
            return RunPlan(fixture.job.outputFiles(), fixture.settings, fixture.job.runOptions(),
                           numbering);
        };
        QCOMPARE(findings(planned(RunPlan::Numbering::None)), found);
        QCOMPARE(names(planned(RunPlan::Numbering::Clashing), fixture.settings), clashing);
        QCOMPARE(names(planned(RunPlan::Numbering::Taken), fixture.settings), taken);
        QCOMPARE(findings(planned(RunPlan::Numbering::Taken)), QString());
        QCOMPARE(fixture.folder.changes(), QString());
    }

    /// A plan of one long file that goes on when nobody wants it: its folder may be slow.
    void endsWithinAFile()
    {
        JobFixture fixture(u"a.tif:WWWWWWWW"_s, u"out/a1.png out/a2.png out/a8.png"_s);
        int asked = 0;
        const RunPlan plan(fixture.job.outputFiles(), fixture.settings, {},
                           RunPlan::Numbering::None, {}, [&] { return ++asked <= 4; });
        QCOMPARE(plan.existing().size(), 2U);
        QVERIFY(asked < 12);
    }

    // Pages are prepared ahead where one output cannot change another: if it could, and it were
    // not noticed, old pages would be written; if it were noticed without need, all would be slow.
    void knowsItsHazards()
    {
        const auto isHazard
            = [](const QString& sources, const QString& changes, const QString& removed) {
                  JobFixture fixture(sources, changes);
                  if (!removed.isEmpty() && !QFile::remove(fixture.folder.path(removed)))
                      throw std::runtime_error("nothing to remove");
                  return RunPlan(fixture.job.outputFiles(), fixture.settings).hasHazards();
              };
        const QString split = u"outputType=2 isSplitTIFFIntoSinglePages=true outputFolderPath="_s;
        QVERIFY(!isHazard(u"a.tif:WW b.tiff:W"_s, split, {}));
        QVERIFY(isHazard(u"a.tif:WW a1.tiff:W"_s, split, {}));
        QVERIFY(isHazard(u"a.tif:WW a1.tiff:W"_s, split, u"in/a1.tiff"_s));
        QVERIFY(!isHazard(u"a.tif:WW b.tiff:W"_s, split, u"in/b.tiff"_s));
        QVERIFY(!isHazard(u"a.tiff:WW"_s, u"outputType=2 outputFolderPath="_s, {}));
        QVERIFY(isHazard(u"x/a.tif:W y/a.tif:W"_s, {}, {}));
    }
};

QTEST_GUILESS_MAIN(RunPlanTest)
#include "RunPlanTest.moc"
