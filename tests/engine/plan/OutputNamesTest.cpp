#include "engine/plan/OutputNames.h"

#include "engine/settings/Settings.h"
#include "tests/support/Testing.h"

class OutputNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void namesTheOutputs()
    {
        // Source, separator, output type; name of the output for page 12, of that for all pages.
        for (const char* row :
             { "scan.tif||0|scan12.jpg|scan.tiff", "scan.tiff|_|1|scan_12.png|scan.tiff",
               "scan.tif|-|2|scan-12.tiff|scan.tiff", "scan.tif|-|3|scan-12.bmp|scan.tiff",
               "scan.tif|-|4|scan-12.gif|scan.tiff", "scan.tif|-|5|scan-|scan.tiff",
               "scan.tif|-|-1|scan-|scan.tiff", "a:b.tif|:|0|a-b-12.jpg|a:b.tiff",
               "a.b.tif||0|a.b12.jpg|a.b.tiff", "scan//||0|scan12.jpg|scan.tiff",
               ".tif|_|0|.tif_12.jpg|.tif.tiff" }) {
            const QStringList names = QString::fromLatin1(row).split(u'|');
            Settings settings(nullptr);
            settings.setSeparator(names.at(1));
            settings.setOutputType(names.at(2).toInt());
            QCOMPARE(pageOutputName(u"/in.d/"_s + names.at(0), settings, 12), names.at(3));
            QCOMPARE(keptTogetherOutputName(u"/in.d/"_s + names.at(0)), names.at(4));
            QCOMPARE(outputFolder(u"/in.d/"_s + names.at(0), settings), u"/in.d"_s);
            QCOMPARE(outputFolder(u'/' + names.at(0), settings), u"/"_s);
        }
        QCOMPARE(joinedPath(u"/in"_s, u"a"_s), u"/in/a"_s);
        QCOMPARE(joinedPath(u"/"_s, u"a"_s), u"/a"_s);
    }
};

QTEST_GUILESS_MAIN(OutputNamesTest)
#include "OutputNamesTest.moc"
