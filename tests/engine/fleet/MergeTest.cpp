#include "engine/fleet/MergeSummary.h"
#include "engine/fleet/OutputCheck.h"
#include "tests/support/Bytes.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Of a file that holds its own name.
    QJsonObject digestMembers(const QString& name)
    {
        const QByteArray bytes = name.toUtf8();
        return { { u"size"_s, bytes.size() },
                 { u"sha256"_s,
                   QString::fromLatin1(
                       QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex()) } };
    }

} // namespace

/// What states say of a plan.
class MergeTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QFile file(path(u"plan"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        PlanWriter plan({ {}, path({}).chopped(1), u"error"_s },
                        [&](const QByteArray& line) { file.write(line); });
        plan.add({ .line = 0,
                   .path = path(u"a"_s),
                   .shown = u"a"_s,
                   .pages = u"1-3"_s,
                   .pageCount = 3,
                   .pagesCounted = 3,
                   .targets = { u"a1"_s, u"a2"_s, u"a3"_s } });
        plan.add({ .line = 1,
                   .path = path(u"k"_s),
                   .shown = u"k"_s,
                   .pages = u"1,3"_s,
                   .pageCount = 2,
                   .pagesCounted = 3,
                   .targets = { u"k.tiff"_s } });
        plan.add(
            { .line = 2, .path = path(u"x"_s), .shown = u"x"_s, .fault = u"it is no TIFF file"_s });
        plan.finish();
        m_identity = plan.end().identity;
    }

    /// A page that is lost, failed or done twice and not told, or one told without a reason.
    void tellsWhatIsNotAsPlanned_data()
    {
        // States are parted by '/'. Words of one: "run", "other" of another plan; the name of the
        // source with its pages and what is said of them: "a1-3:begin", "a1:written", "a1-3:done".
        // "~" is half a line, "+" behind an ending the file that keeps pages together. The source
        // x, which is none, is always done with. On the right what is told, without "failed: x:
        // ...".
        addTextRows({ "states", "told" }, R"(
run a1-3:begin a1:written a2:written a3:skipped a1-3:done k1,3:begin k1:gathered k3:gathered \
    k1,3:done+ |
run a1-2:begin a1:written a2:written a1-2:done k1,3:begin k1:gathered k3:gathered k1,3:done+ \
    / run a3:begin a3:written a3:done |
run k1,3:done+ | missing: a, pages 1-3: never begun
run a1-3:begin a1:written a1-3:stopped k1,3:done+ | missing: a, pages 2-3: stopped
run a1-3:begin a1:written ~ k1,3:done+ | missing: a, pages 2-3: begun and not ended
run a1-3:begin a1:written a2:written a3:written k1,3:done+ | missing: a: begun and not ended
run a1-3:begin a1:written a2:written a1-3:done k1,3:done+ \
    | missing: a, page 3: not told by a run that has ended
run a1-3:begin a1:written a1-3:stopped run a1-3:begin a2:written a3:written a1-3:done k1,3:done+ |
run a1-3:begin a1:written a2:written run a3:begin a3:written a3:done k1,3:done+ |
run a1-3:begin a1:written a2:written a3:written a1-3:failed=more run a3:begin a3:written a3:done \
    run a1-3:begin run a3:begin a3:done k1,3:done+ |
run a1-2:begin a1:written a2:written a1-2:failed=more run a3:begin a3:written a3:done k1,3:done+ \
    | failed: a: more
run a1-3:begin a1:written a2:failed a3:failed a1-3:failed k1,3:done+ \
    | failed: a, pages 2-3: bad page
run a1-3:begin a1-3:failed=gone k1,3:done+ | failed: a, pages 1-3: gone
run a1-3:begin a1:written a2:written a3:written a1-3:failed=more~now k1,3:done+ \
    | failed: a: more now
run a1-3:begin a1:failed a1-3:failed run a1-3:begin a1:written a2:written a3:written a1-3:done \
    k1,3:done+ |
run a1-3:begin a1:failed a2:written a1-3:failed k1,3:done+ / run a1-3:begin a1:written a2:written \
    a3:written a1-3:done | done twice: a, page 2: by 0 and by 1
run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:done+ \
    / run a1-3:begin a1:failed a1-3:stopped |
run a1:written a2:written a3:written a1-3:done k1,3:done+ \
    / run k1,3:begin k1:gathered k3:gathered k1,3:done+ | done twice: k, pages 1,3: by 0 and by 1
run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:begin k1:gathered k3:gathered \
    | missing: k, pages 1,3: begun and not ended
run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:begin k1:gathered k3:gathered \
    k1,3:failed=full | failed: k, pages 1,3: full
run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:begin k1:failed k3:gathered \
    k1,3:failed+ | failed: k, page 1: bad page
run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:done+ other a1:written k1,3:done+ \
    | foreign: 0: 2 events: run 8 is of another plan
a1:written run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:done+ \
    | foreign: 0: 1 event: they stand before any run
run a1-3:begin a1:written a2:written a3:written a1-3:done k1,3:done+ k2:gathered y1:written \
    a1-4:done a1:eaten | foreign: 0: 1 event: the plan has no line 7 \
    / foreign: 0: 1 event: line 0 of the plan: the plan has no pages '1-4' of its source \
    / foreign: 0: 1 event: line 0 of the plan: its outcome 'eaten' is not known \
    / foreign: 0: 1 event: line 1 of the plan: the plan has no page 2 of its source)");
    }
    void tellsWhatIsNotAsPlanned()
    {
        QFETCH(QString, states);
        QFETCH(QString, told);
        QStringList paths;
        for (const QString& words : states.split(u" / "_s))
            paths.append(writeState(QString::number(paths.size()), words));
        MergeSummary summary;
        MergedRun run(path(u"plan"_s), paths,
                      [&](const auto& found) { summary.addForeign(found); });
        run.forEach([&](const MergedSource& source) { summary.add(source, run.states()); });
        QStringList lines = summary.lines(run, nullptr);
        QVERIFY(lines.removeOne(u"failed: x: it is no TIFF file"_s));
        const QJsonObject json = summary.toJson(run, nullptr, 1);
        QCOMPARE(json[u"tornLines"_s].toInt(), states.count(u'~') - states.count(u"more~"_s));
        const QJsonValue pages = json[u"pages"_s];
        QCOMPARE(pages[u"written"_s].toInt() + pages[u"skipped"_s].toInt()
                     + pages[u"failed"_s].toInt() + pages[u"missing"_s].toInt(),
                 5);
        lines = lines.first(lines.size() - 3 - (states.contains(u" ~"_s) ? 1 : 0));
        QCOMPARE(lines.replaceInStrings(path({}), u""_s).join(u" / "_s), told);
    }

    /// A file taken for the one that was written, or a converted source that is missed.
    void readsFilesBack_data()
    {
        addTextRows({ "change", "told" }, R"(
none |
a1 | %/a1 is missing
a1=aa | %/a1 has other bytes than when it was converted
k.tiff=long | %/k.tiff has another size than when it was converted
a2/ | %/a2 cannot be read
a |
a=b | source %/a has other bytes than when it was converted)");
    }
    void readsFilesBack()
    {
        QFETCH(QString, change);
        QFETCH(QString, told);
        for (const QString& name : { u"a"_s, u"k"_s, u"a1"_s, u"a2"_s, u"a3"_s, u"k.tiff"_s })
            putBytes(path(name), name.toUtf8());
        const QString name = change.section(u'=', 0, 0).remove(u'/');
        QFile::remove(path(name));
        if (change.contains(u'='))
            putBytes(path(name), change.section(u'=', 1).toUtf8());
        if (change.contains(u'/'))
            QVERIFY(QDir(path({})).mkdir(name));
        MergedRun run(path(u"plan"_s),
                      { writeState(u"0"_s,
                                   u"run a1-3:begin a1:written a2:written a3:written a1-3:done "
                                   "k1,3:begin k1:gathered k3:gathered k1,3:done+"_s) },
                      [](const auto&) {});
        OutputCheck check;
        run.forEach([&](const MergedSource& source) { check.check(source); });
        QStringList lines;
        check.faults().addTo(lines);
        QCOMPARE(lines.join(u" / "_s), told.replace(u"%/"_s, path({})));
        QCOMPARE(check.outputs(), qint64 { 4 });
        QCOMPARE(check.sources(), qint64 { change == u"a" ? 1 : 2 });
    }

    /// A plan that was cut off or changed, or a state of a later format, taken as it is.
    void refusesWhatItCannotTrust()
    {
        const QByteArray plan = bytesOf(path(u"plan"_s));
        const QString state = writeState(u"0"_s, u"run"_s);
        const auto opens = [&](const QByteArray& text) {
            putBytes(path(u"plan"_s), text);
            MergedRun(path(u"plan"_s), { state }, [](const auto&) {});
        };
        opens(plan);
        const qsizetype last = plan.lastIndexOf('\n', -2) + 1;
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, opens(plan.first(last)));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                 opens(QByteArray(plan).replace("\"a2\"", "\"b2\"")));
        putBytes(state, bytesOf(state).replace("\"format\":1", "\"format\":2"));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, opens(plan));
    }

private:
    QString path(const QString& name) const { return m_folder->path() + u'/' + name; }

    /// One event, without what only "run" has.
    QJsonObject eventOf(const QString& word) const
    {
        static const QRegularExpression form(uR"(^(\w)([\d,-]+):(\w+)(=[^+]+)?(\+?)$)"_s);
        const QRegularExpressionMatch match = form.match(word);
        const QString name = match.captured(1);
        const QString pages = match.captured(2);
        const QString what = match.captured(3);
        const int line = name == u"a" ? 0 : name == u"k" ? 1 : name == u"x" ? 2 : 7;
        QJsonObject event { { u"line"_s, line }, { u"source"_s, path(name) } };
        if (what == u"begin") {
            event[u"type"_s] = what;
            event[u"pages"_s] = pages;
        } else if (QStringList { u"done"_s, u"failed"_s, u"stopped"_s }.contains(what)
                   && (pages.size() > 1 || what == u"done")) {
            event = digestMembers(name);
            event[u"line"_s] = line;
            event[u"source"_s] = path(name);
            event[u"type"_s] = u"source"_s;
            event[u"pages"_s] = pages;
            event[u"outcome"_s] = what;
            if (match.hasCaptured(4))
                event[u"reasons"_s] = QJsonArray { match.captured(4).mid(1).replace(u'~', u' ') };
            if (!match.captured(5).isEmpty()) {
                QJsonObject output = digestMembers(u"k.tiff"_s);
                output[u"path"_s] = path(u"k.tiff"_s);
                event[u"output"_s] = output;
            }
        } else {
            const QString target = name == u"k" ? u"k.tiff"_s : name + pages;
            if (what == u"written")
                event = digestMembers(target);
            event[u"line"_s] = line;
            event[u"source"_s] = path(name);
            event[u"type"_s] = u"page"_s;
            event[u"page"_s] = pages.toInt();
            event[u"output"_s] = path(target);
            event[u"outcome"_s] = what;
            if (what == u"failed")
                event[u"reasons"_s] = QJsonArray { u"bad page"_s };
        }
        return event;
    }

    QString writeState(const QString& name, const QString& words) const
    {
        QByteArray text;
        for (const QString& word : words.split(u' ')) {
            if (word == u"~")
                text += "{\"type\":\"pa\n";
            else if (word == u"run" || word == u"other")
                text += jsonLine({ { u"type"_s, u"run"_s },
                                   { u"format"_s, 1 },
                                   { u"id"_s, word == u"run" ? u"7"_s : u"8"_s },
                                   { u"started"_s, u"2026-11-22T10:00:00.000Z"_s },
                                   { u"plan"_s, word == u"run" ? m_identity : u"00"_s } });
            else
                text += jsonLine(eventOf(word));
        }
        putBytes(path(name), text);
        return path(name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_identity;
};

} // namespace pagestack

QTEST_GUILESS_MAIN(pagestack::MergeTest)
#include "MergeTest.moc"
