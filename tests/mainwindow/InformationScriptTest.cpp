#include "mainwindow/desktop/InformationScript.h"

#include "tests/support/Testing.h"

class InformationScriptTest : public QObject
{
    Q_OBJECT

private slots:
    void namesTheFileByItsFolders_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("file"); // what the third line says between file and startup disk
        QTest::newRow("root folder") << u"/a.tif"_s << u"\"a.tif\""_s;
        QTest::newRow("nested folders")
            << u"/Users/demo/scans/a.tif"_s
            << u"\"a.tif\" of folder \"scans\" of folder \"demo\" of folder \"Users\""_s;
        QTest::newRow("blanks and umlauts")
            << u"/Büro 1/ä b.tif"_s << u"\"ä b.tif\" of folder \"Büro 1\""_s;
        QTest::newRow("quote and backslash")
            << u"/12\" \\ 3/a\".tif"_s << u"\"a\".tif\" of folder \"12\" \\ 3\""_s;
        QTest::newRow("places to fill")
            << u"/%@/%2/%1.tif"_s << u"\"%1.tif\" of folder \"%2\" of folder \"%@\""_s;
    }

    void namesTheFileByItsFolders()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, file);
        QCOMPARE(
            informationScript(path),
            u"tell application \"Finder\"\nactivate \nopen information window of document file "_s
                + file + u" of startup disk\nend tell"_s);
    }

    void tellsWhichNamesCouldBecomeCommands()
    {
        QVERIFY(isSafeInScript(u"/Büro 1/it's $(a) `b` %1\n.tif"_s));
        QVERIFY(!isSafeInScript(u"/a\" & (do shell script \"id\") & \".tif"_s));
        QVERIFY(!isSafeInScript(u"/folder\\/a.tif"_s)); // would take the closing quote along
    }
};

QTEST_APPLESS_MAIN(InformationScriptTest)
#include "InformationScriptTest.moc"
