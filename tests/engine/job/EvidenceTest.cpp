#include "engine/files/ChecksumFiles.h"
#include "tests/engine/job/JobFixture.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"
#include "tests/support/Validation.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString hexOf(const QByteArray& bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

class EvidenceTest : public QObject
{
    Q_OBJECT

private slots:
    // Lines of files that are not of this run must never go.
    void keepsTheLinesOfOtherFiles_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after"); // '#' stands for a digest, '*' for the new one
        QTest::newRow("none") << QString() << u"*  a b\n"_s;
        QTest::newRow("others") << u"#  c\n# *d\n"_s << u"#  c\n# *d\n*  a b\n"_s;
        QTest::newRow("the same") << u"#  a b\n#  c\n"_s << u"#  c\n*  a b\n"_s;
        QTest::newRow("the same, below") << u"#  ./a b\n"_s << u"*  a b\n"_s;
        QTest::newRow("without an end") << u"#  c"_s << u"#  c\n*  a b\n"_s;
        QTest::newRow("escaped") << u"\\#  c\\nd\n"_s << u"\\#  c\\nd\n*  a b\n"_s;
        for (const char* odd : { "SHA256 (c) = #\n", "#  c\n\n", "#\n", "#  \n", "12  c\n" })
            QTest::newRow(odd) << QString::fromLatin1(odd) << QString();
    }
    void keepsTheLinesOfOtherFiles()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"SHA256SUMS"_s);
        const FileDigest digest;
        const QByteArray old = before.replace(u'#', hexOf("old")).toUtf8();
        if (!old.isEmpty())
            putBytes(path, old);
        ChecksumFiles files;
        files.add(folder.filePath(u"a b"_s), digest);
        const auto troubles = files.write();
        QCOMPARE(troubles.empty(), !after.isNull());
        after.replace(u'#', hexOf("old")).replace(u'*', digest.hex());
        // The mark of binary files is one of the others' lines.
        after.replace(digest.hex() + u'd', u"*d"_s);
        QCOMPARE(bytesOf(path), troubles.empty() ? after.toUtf8() : old);
    }

    // Pages that another thread took over, and those that none did, told the other way round.
    void tellsWhatWasTakenOver()
    {
        for (const QString& jobs : { u"outputType=0 jobs=1"_s, u"outputType=0 jobs=2"_s }) {
            JobFixture fixture(u"a.tif:WW"_s, jobs);
            writeTiff(fixture.folder.path(u"in/a.tif"_s), { "rgb", "jpeg smooth" });
            fixture.run();
            const std::deque<LogFile>& pages = fixture.job.log()->files.at(0)->logFiles;
            QVERIFY(!pages.at(0).isTakenOver && pages.at(1).isTakenOver);
            const QString path = fixture.job.log()->logFilePath();
            QCOMPARE(bytesOf(path).count("TakenOver=\"yes\""), 1);
            const QString fault = logComplaint(path);
            QVERIFY2(fault.isNull() || fault == u"skipped", qPrintable(fault));
        }
    }

    // A digest of other bytes than those in place, a document that is cut off or of another form.
    void provesWhatIsInPlace_data()
    {
        QTest::addColumn<QString>("changes");
        QTest::addColumn<QString>("state");
        const QString troubles = u" in/more.tif:WWW out/a2.png/"_s;
        QTest::newRow("pages") << troubles << u"complete"_s;
        QTest::newRow("pages by threads") << troubles + u" jobs=3 verify=true"_s << u"complete"_s;
        QTest::newRow("together") << u"outputType=2"_s << u"complete"_s;
        QTest::newRow("together by threads") << u"outputType=2 jobs=3"_s << u"complete"_s;
        QTest::newRow("cancelled")
            << u"stopAt=page~in/a.tif~2~out/a2.png~Written"_s << u"cancelled"_s;
        QTest::newRow("cancelled together")
            << u"outputType=2 stopAt=page~in/a.tif~2~out/a.tiff~Written"_s << u"cancelled"_s;
        QTest::newRow("broken off") << u"stopAt=none"_s << u"failed"_s;
    }
    void provesWhatIsInPlace()
    {
        QFETCH(QString, changes);
        QFETCH(QString, state);
        JobFixture fixture(
            u"a.tif:WWU back\\slash.tif:W bad.tif:WBW more.tif:W text.tif gone.tif>x"_s,
            u"checksums=true keep-record=true "_s + changes);
        if (state == u"failed")
            fixture.onEvent = [&](const QString& met) {
                if (met == u"file bad.tif")
                    throw std::runtime_error("an observer");
            };
        fixture.run();
        const QString out = fixture.folder.path(u"out"_s);
        const QString trouble = complaintOf(
            u"sha256sum"_s, { u"--check"_s, u"--strict"_s, u"--quiet"_s, u"SHA256SUMS"_s }, out);
        QVERIFY2(trouble.isNull() || trouble == u"skipped", qPrintable(trouble));

        const QString logFault = logComplaint(fixture.job.log()->logFilePath());
        QVERIFY2(logFault.isNull() || logFault == u"skipped", qPrintable(logFault));

        const QString path = fixture.job.log()->logFilePath().chopped(4) + u".json"_s;
        const QJsonObject record = QJsonDocument::fromJson(bytesOf(path)).object();
        QCOMPARE(record[u"state"_s].toString(), state);
        const QString fault = schemaComplaint(u"record.schema.json"_s, { path }, false);
        if (fault == u"skipped")
            qInfo("the record is not validated: python3 has no jsonschema");
        else
            QVERIFY2(fault.isNull(), qPrintable(fault));

        QStringList proved;
        const auto look = [&](const QJsonObject& file) {
            if (!file.contains(u"sha256"_s))
                return;
            const QByteArray bytes = bytesOf(file[u"path"_s].toString());
            QCOMPARE(file[u"sha256"_s].toString(), hexOf(bytes));
            QCOMPARE(file[u"size"_s].toInteger(), bytes.size());
            proved.append(lastPathComponent(file[u"path"_s].toString()));
        };
        int written = 0;
        int failed = 0;
        for (const auto& source : record[u"sources"_s].toArray()) {
            QCOMPARE(source[u"sha256"_s].isString(), source[u"pagesFound"_s].isDouble());
            const bool isGathered = source[u"gathered"_s].isObject();
            look(source[u"gathered"_s].toObject());
            for (const auto& page : source[u"pages"_s].toArray()) {
                look(page[u"output"_s].toObject());
                const QString outcome = page[u"outcome"_s].toString();
                written += outcome == u"written" || (outcome == u"gathered" && isGathered) ? 1 : 0;
                failed += outcome == u"failed" ? 1 : 0;
                QCOMPARE(!page[u"reasons"_s].toArray().isEmpty(), outcome == u"failed");
            }
        }
        const QJsonObject totals = record[u"totals"_s].toObject();
        QCOMPARE(totals[u"pagesWritten"_s].toInt(), written);
        QCOMPARE(totals[u"pagesFailed"_s].toInt(), failed);
        // Every file in place is proved, in the log, too.
        QStringList there = namesIn(out);
        there.removeAll(u"SHA256SUMS"_s);
        there.removeAll(u"a2.png"_s);
        proved.removeAll(u"a2.png"_s);
        QCOMPARE(QSet(proved.begin(), proved.end()), QSet(there.begin(), there.end()));
        const QByteArray log = bytesOf(fixture.job.log()->logFilePath());
        for (const QString& name : there)
            QVERIFY2(log.contains(hexOf(bytesOf(out + u'/' + name)).toLatin1()), qPrintable(name));
    }

    // What concerns no source would be said of the next one or of none.
    void tellsOfTheRunAsAWhole()
    {
        JobFixture fixture(u"a.tif:W b.tif:W"_s,
                           u"checksums=true keep-record=true out/SHA256SUMS/"_s);
        fixture.onEvent = [&](const QString& met) {
            if (met == u"file b.tif")
                emit fixture.job.diagnosed({ Diagnostic::Severity::Warning, u"out"_s, 0, u"x"_s });
        };
        fixture.run();
        const QString path = fixture.job.log()->logFilePath().chopped(4) + u".json"_s;
        const QJsonObject record = QJsonDocument::fromJson(bytesOf(path)).object();
        QCOMPARE(record[u"warnings"_s].toArray(), QJsonArray { u"out: x"_s });
        const QJsonArray reasons = record[u"reasons"_s].toArray();
        QCOMPARE(reasons.size(), 1);
        QVERIFY(reasons.first().toString().contains(u"out/SHA256SUMS: "));
        QCOMPARE(record[u"sources"_s].toArray().last()[u"warnings"_s].toArray(), QJsonArray());
    }

    // A record that was asked for and is nowhere must not go without a word.
    void tellsOfARecordWithoutAPlace()
    {
        JobFixture fixture(u"a.tif:W"_s, u"keep-record=true"_s);
        fixture.job.log()->setStored(false);
        fixture.run();
        QCOMPARE(fixture.events.filter(u"trouble record "_s).size(), 1);
    }
};

QTEST_GUILESS_MAIN(EvidenceTest)
#include "EvidenceTest.moc"
