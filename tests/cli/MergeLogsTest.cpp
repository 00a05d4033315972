#include "tests/support/Bytes.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"
#include "tests/support/Validation.h"

#include <QProcess>

/// Runs in parts of the built program, and what is made of their states.
class MergeLogsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<TestFolder>();
        QVERIFY(QDir::setCurrent(m_folder->path({})));
    }

    /// A part that is lost, doubled or damaged between a run and the proof of it; lines that are
    /// not as the schemas promise.
    void provesRuns_data()
    {
        // Options of the plan; what happens after it, "RUN" being a run and "MERGE" the proof; the
        // output of the latter and its exit code.
        addTextRows({ "options", "commands", "told" }, R"(
-f png | RUN --resume s; MERGE s --verify | 1 state by 1 run / 4 of 4 sources done, 0 failed, \
    0 incomplete / 8 of 8 pages written, 0 skipped, 0 failed, 0 missing, in 8 outputs / 8 outputs \
    and 4 sources read back, 0 not as converted / 0
-f tiff | RUN --shard 0/2 --resume s; RUN --shard 1/2 --resume t; MERGE s t --verify \
    | 2 states by 2 runs / 4 of 4 sources done, 0 failed, 0 incomplete / 8 of 8 pages written, \
    0 skipped, 0 failed, 0 missing, in 4 outputs / 4 outputs and 4 sources read back, \
    0 not as converted / 0
-f bmp | RUN --shard 1/3 --resume t; RUN --shard 2/3 --resume u; touch s; MERGE s t u \
    | missing: a.tif, pages 1-2: never begun / 3 states by 2 runs / 3 of * / 6 of * \
    / ! plan: not all of the plan was done exactly once / 1
-f png | RUN --resume s; rm out/a2.png; echo >>out/b1.png; MERGE s s --verify \
    | OUT/a2.png is missing / OUT/b1.png has another size than when it was converted \
    / 1 state by 1 run / 4 of * / 8 of * / 8 outputs and 4 sources read back, 2 not * / ! s: named twice, read once \
    / ! plan: not all files are as they were converted / 1
-f png | RUN --resume s; head -c -400 s >t; RUN --resume t; MERGE t --verify | 1 state by 2 runs \
    / 1 line of them cut off / 4 of 4 sources done, 0 failed, 0 incomplete / 8 of * / 8 outputs * / 0
-f png | RUN --resume s; cp s t; MERGE s t | done twice: a.tif, pages 1-5: by s and by t \
    / done twice: b.tif, page 1: by s and by t / done twice: c.tif, page 1: by s and by t \
    / done twice: d.tif, page 1: by s and by t / 2 states by 2 runs / 4 of * / 8 of * / ! plan: not all * / 1
-f png | cp plan p; sed -i '$d' plan; MERGE p | ! plan: it is no plan, or one that is cut off / 3
-f png | MERGE none | ! none: No such file or directory / 3
-f png | touch s; MERGE s --log plan | ! plan is the plan, which would be replaced / 4
-f png | MERGE | ! no STATE is given; * / 2)");
    }
    void provesRuns()
    {
        QFETCH(QString, options);
        QFETCH(QString, commands);
        QFETCH(QString, told);
        m_folder->make(u"a.tif:WWWWW b.tif:W c.tif:W d.tif:W"_s);
        QCOMPARE(
            shell(u"'%1' plan a.tif b.tif c.tif d.tif -o out %2 >plan"_s.arg(m_program, options)),
            u"0"_s);
        commands.replace(u"RUN"_s, u"'%1' run --plan plan --no-log -q"_s.arg(m_program));
        commands.replace(u"MERGE"_s, u"'%1' merge-logs --plan plan"_s.arg(m_program));
        told.replace(u" / "_s, u"\n"_s);
        const QString found = shell(commands).replace(QDir::currentPath() + u"/out"_s, u"OUT"_s);
        QCOMPARE(withStars(found, told), told);
    }

    /// A line of another form than the schemas say, from any command, or a log that is none.
    void writesWhatTheSchemasSay()
    {
        m_folder->make(u"a.tif:WWWF b.tif:WB c.tif d.tif:WW big.tif:WW"_s);
        for (const QString& format : { u"png"_s, u"tiff"_s }) {
            shell(
                uR"('%1' plan a.tif b.tif c.tif d.tif big.tif -o out-%2 -f %2 >plan-%2; touch d.tif
                '%1' run --plan plan-%2 -q --no-log --shard 0/2 --resume s-%2 --json >r-%2
                '%1' run --plan plan-%2 -q --no-log --shard 0/2 --resume s-%2 --json >>r-%2
                '%1' run --plan plan-%2 -q --no-log --shard 1/2 --resume t-%2 --json >>r-%2
                '%1' merge-logs --plan plan-%2 s-%2 t-%2 --verify --log log-%2 --failed failed-%2 --json >m-%2
                rm s-%2; touch s-%2
                '%1' merge-logs --plan plan-%2 s-%2 --json --log log2-%2 >>m-%2)"_s.arg(m_program,
                                                                                        format));
            const QStringList names
                = QStringList { u"s-%1"_s, u"t-%1"_s, u"r-%1"_s, u"m-%1"_s }.replaceInStrings(
                    u"%1"_s, format);
            for (const QString& type : { u"begin"_s, u"proven"_s, u"failed"_s, u"merge"_s,
                                         format == u"png" ? u"written"_s : u"gathered"_s }) {
                QByteArray all;
                for (const QString& name : names)
                    all += bytesOf(name);
                QVERIFY2(all.contains('"' + type.toLatin1() + '"'), qPrintable(type));
            }
            const QString plan = u"plan-"_s + format;
            for (const QString& log : { u"log-"_s + format, u"log2-"_s + format }) {
                const QString fault = logComplaint(log);
                QVERIFY2(fault.isNull() || fault == u"skipped", qPrintable(fault));
            }
            QVERIFY(bytesOf(u"log-"_s + format).contains("Status=\"Unable to Open File!\""));
            QCOMPARE(bytesOf(u"failed-"_s + format).count("/b.tif"), 1);
            const QString fault = schemaComplaint(u"plan.schema.json"_s, { plan }, true);
            if (fault == u"skipped")
                QSKIP("python3 has no jsonschema");
            QVERIFY2(fault.isNull(), qPrintable(fault));
            const QString eventFault = schemaComplaint(u"events.schema.json"_s, names, true);
            QVERIFY2(eventFault.isNull(), qPrintable(eventFault));
            // The schemas are no open doors.
            putBytes(plan, bytesOf(plan).replace("\"targets\"", "\"target\""));
            QVERIFY(!schemaComplaint(u"plan.schema.json"_s, { plan }, true).isNull());
            putBytes(u"x"_s, bytesOf(names.at(1)).replace("\"failed\"", "\"fallen\""));
            QVERIFY(!schemaComplaint(u"events.schema.json"_s, { u"x"_s }, true).isNull());
        }
    }

private:
    /// Standard output of these commands, then standard error with "!" for the program's name, then
    /// the exit code.
    static QString shell(const QString& commands)
    {
        QProcess process;
        process.start(u"/bin/sh"_s, { u"-c"_s, commands });
        process.waitForFinished(60000);
        QString errors = QString::fromUtf8(process.readAllStandardError());
        errors.replace(QRegularExpression(u"(?m)^pagestack-convert:"_s), u"!"_s);
        return QString::fromUtf8(process.readAllStandardOutput()) + errors
            + QString::number(process.exitCode());
    }

    const QString m_program = qEnvironmentVariable("PAGESTACK_BIN") + u"/pagestack-convert"_s;
    std::unique_ptr<TestFolder> m_folder;
};

QTEST_GUILESS_MAIN(MergeLogsTest)
#include "MergeLogsTest.moc"
