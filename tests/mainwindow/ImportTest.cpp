#include "engine/sources/PathList.h"
#include "mainwindow/import/ImportFilesWindowController.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QThreadPool>
#include <QTimer>

namespace {

const QString types = u"tif,TIF,tiff,TIFF"_s;

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace

/// The sheet of the real window that takes paths from a file or a text.
class ImportTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        takeNewFolder();
        QDir::setCurrent(path(u""_s));
    }
    void init()
    {
        start();
        press("importAction");
    }
    void cleanup() { end(); }

    void findsTheFilesThatATextNames_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("paths");
        QTest::addColumn<qsizetype>("duplicates");
        QTest::addColumn<qsizetype>("otherLines");
        const auto row = [](const char* name, const QString& text, const QStringList& paths,
                            qsizetype duplicates = 0, qsizetype others = 0) {
            QTest::newRow(name) << text << paths << duplicates << others;
        };
        const QString here = QDir::currentPath();
        row("nothing", u""_s, {});
        row("any case", u"/a.Tif\n/b.tiff\n/c.TIFF\n/f.tIfF"_s,
            { u"/a.Tif"_s, u"/b.tiff"_s, u"/c.TIFF"_s, u"/f.tIfF"_s });
        row("no TIFF names", u"/d.tif \n/e.jpg\n/tif\n/x.tif/y\n/.tif\n/z.\n\"/q.tif\""_s, {}, 0,
            7);
        row("blank lines", u"\n\n  \n/a.tif\n\n"_s, { u"/a.tif"_s });
        row("carriage returns", u"/a.tif\r\n\r\n/b.tif"_s, { u"/b.tif"_s }, 0, 1);
        row("twice", u"/b.tif\n/a.tif\n/b.tif\n/B.tif\n/b.tif"_s,
            { u"/b.tif"_s, u"/a.tif"_s, u"/B.tif"_s }, 2);
        row("twice, by dots", u"a.tif\n./a.tif\n%1//./a.tif\n/x/../a.tif"_s.arg(here),
            { here + u"/a.tif"_s, u"/x/../a.tif"_s }, 2);
        row("relative", u"a.tif\n%1/a.tif\n../b.tif\n~/c.tif\nC:/d.tif\n:/e.tif"_s.arg(here),
            { here + u"/a.tif"_s, here + u"/../b.tif"_s, here + u"/~/c.tif"_s,
              here + u"/C:/d.tif"_s, here + u"/:/e.tif"_s },
            1);
        row("not trimmed", u" /a.tif\n\t.tif"_s, { here + u"/ /a.tif"_s, here + u"/\t.tif"_s });
        row("signs of URLs", u"/a%20b#c?d;.tif\n/\u00fc \u65e5.tif\n//two words/x.tif"_s,
            { u"/a%20b#c?d;.tif"_s, u"/\u00fc \u65e5.tif"_s, u"/two words/x.tif"_s });
        row("a folder", u"/scans.tif/"_s, { u"/scans.tif/"_s });
        row("other line ends", u"/a\u2028b.tif\v/c.tif"_s, { u"/a\u2028b.tif\v/c.tif"_s });
    }

    void findsTheFilesThatATextNames()
    {
        QFETCH(const QString, text);
        const PathList list = parsePathList(text, types);
        QStringList paths;
        for (const QUrl& url : list.files) {
            QVERIFY(url.isValid() && url.isLocalFile());
            paths.append(url.toLocalFile());
        }
        QTEST(paths, "paths");
        QTEST(list.duplicates, "duplicates");
        QTEST(list.otherLines, "otherLines");
        QVERIFY(parsePathList(text, u""_s).files.isEmpty());
    }

    void takesTimeByTheLengthOfTheList()
    {
        QString text;
        for (int i = 0; i < 100000; ++i)
            text += u"/scans/page %1.tif\n"_s.arg(i % 60000);
        text += QString(200000, u'/') + u"x.tif"_s + QChar(0) + u".tif"_s;
        const PathList list = parsePathList(text, types);
        QCOMPARE(list.files.size(), 60001);
        QCOMPARE(list.duplicates, 40000);
        QCOMPARE(countMissing(list.files, false), 60001); // the NUL included
        QCOMPARE(countMissing(list.files, true), 0);
    }

    void readsTextFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("paths");
        QTest::newRow("no last line end") << "/x.jpg\n/b.tif"_ba << u"/b.tif"_s;
        QTest::newRow("byte order mark") << "\xEF\xBB\xBF/\xC3\xBC.tif"_ba << u"/\u00fc.tif"_s;
        QTest::newRow("Latin-1") << "/a.tif\n/\xFC.tif\n"_ba << u""_s;
        QTest::newRow("cut off in a letter") << "/a.tif\n/b.tif\n\xC3"_ba << u""_s;
        QTest::newRow("no file") << QByteArray() << u""_s;
    }

    void readsTextFiles()
    {
        QFETCH(const QByteArray, bytes);
        const QString file = path(u"list.txt"_s);
        if (bytes.isNull())
            QFile::remove(file);
        else
            write(file, bytes);
        sheet().parseText(u"/left.tif"_s);
        sheet().parseFile(file);
        QTEST(paths().join(u','), "paths");
        QCOMPARE(found(), u"Total Files Found : %1"_s.arg(paths().size()));
        QCOMPARE(file, fileField().text());
    }

    void readsNoListWithoutEnd()
    {
        QFile file(path(u"list.txt"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize((qint64 { 256 } << 20) + 1));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, readPathList(file.fileName()));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, readPathList(u"/dev/null"_s));
    }

    void enablesTheMethodChosen()
    {
        const auto check = [this](int method) {
            for (const char* name : { "importFile", "browseBtn" })
                QCOMPARE(part(name).isEnabled(), method == 0);
            for (const char* name : { "importText", "pasteFromClipboardBtn" })
                QCOMPARE(part(name).isEnabled(), method == 1);
            QCOMPARE(part<QAbstractButton>("importFromFileBtn").isChecked(), method == 0);
            QCOMPARE(part<QAbstractButton>("importFromTextBtn").isChecked(), method == 1);
            QCOMPARE(area().viewport()->backgroundRole(),
                     method == 1 ? QPalette::Base : QPalette::Window);
            QVERIFY(entered().isEmpty() && fileField().text().isEmpty());
        };
        check(0);
        fileField().setText(u"list.txt"_s);
        click("importFromTextBtn");
        QCOMPARE(sheet().focusWidget(), &part("importFromTextBtn"));
        check(1);
        area().setPlainText(u"/a.tif"_s);
        area().setFocus();
        QTest::keyClick(&area(), Qt::Key_Tab);
        QVERIFY(sheet().focusWidget() != &area());
        click("importFromFileBtn");
        QCOMPARE(sheet().focusWidget(), &part("importFromFileBtn"));
        check(0);
        sheet().importMethodChanged(&part<QAbstractButton>("cancelImportBtn")); // no tag
        check(-1);
    }

    void marksTheKeyLetters()
    {
        auto& paste = part<QAbstractButton>("pasteFromClipboardBtn");
        QCOMPARE(keyLetterPosition(paste), 0);
        paste.setText(u"oPap Paper"_s);
        const auto mark
            = [&](const QString& letter, int occurrance, const QColor& color = Qt::black) {
                  sheet().setButtonKeyCharacter(&paste, letter, color, occurrance);
                  return keyLetterPosition(paste);
              };
        QCOMPARE(mark(u"p"_s, 1), 1);
        QCOMPARE(mark(u"P"_s, 2), 5);
        QCOMPARE(mark(u"O"_s, 2), 5); // what is not there leaves the letter where it is
        QCOMPARE(mark(u"o"_s, 1, QColor()), 5);
    }

    void pastesTheFilesAlone()
    {
        click("importFromTextBtn");
        area().setPlainText(u"/old.tif"_s);
        QClipboard& clipboard = *QGuiApplication::clipboard();
        clipboard.clear();
        click("pasteFromClipboardBtn");
        QCOMPARE(entered(), u"/old.tif"_s);
        clipboard.setText(u"x\n/a.tif\n/none/b.tif\n/a.tif\n"_s);
        click("pasteFromClipboardBtn");
        QCOMPARE(entered(), u"/a.tif\n/none/b.tif"_s);
        QCOMPARE(paths().join(u' '), u"/a.tif /none/b.tif"_s);
        QCOMPARE(found(), u"Total Files Found : 2"_s);
        QTRY_COMPARE(leftOut(),
                     u"1 duplicate, 1 line that is no TIFF file, 2 files that do not exist"_s);
        QVERIFY(!sheet().findChild<QTimer*>()->isActive()); // nothing is to replace this text
        clipboard.setText(u"/c.jpg\r\n"_s);
        click("pasteFromClipboardBtn");
        QCOMPARE(entered(), u""_s);
        QCOMPARE(found(), u"Total Files Found : 0"_s);
        area().undo();
        QCOMPARE(entered(), u"/a.tif\n/none/b.tif"_s);
    }

    void saysWhatIsLeftOutWhileTyping()
    {
        write(path(u"here.tif"_s), "x");
        write(path(u"no\u00a0break.tif"_s), "x");
        click("importFromTextBtn");
        area().setPlainText(u"here.tif\nno\u00a0break.tif\n"_s);
        QTRY_COMPARE(found(), u"Total Files Found : 2"_s);
        area().appendPlainText(u"here.tif\nhere.tif\ngone.tif\nc\nd\ne"_s);
        QTRY_COMPARE(leftOut(),
                     u"2 duplicates, 3 lines that are no TIFF files, 1 file that does not exist"_s);
        QVERIFY(paths().isEmpty()); // until Import
        area().setPlainText(u"here.tif"_s);
        QTRY_COMPARE(leftOut(), u""_s);
        QTest::keyClick(&area(), Qt::Key_Return); // a new line, not Import
        QVERIFY(sheet().isVisible());
        sheet().parseText(u"gone.tif"_s);
        click("importFromFileBtn");
        sheet().findChild<QThreadPool*>()->waitForDone();
        QCoreApplication::processEvents(); // what the check has to tell of a text that is gone
        QCOMPARE(found(), u"Total Files Found : 0"_s);
        QCOMPARE(leftOut(), u""_s);
    }

    void refusesToImportNothing_data()
    {
        addTextRows({ "method", "text", "message", "focus" }, R"(
            importFromFileBtn |                | Please select file to import!        | browseBtn
            importFromTextBtn |                | Please paste file(s) path to import! | importText
            importFromFileBtn | /none/list.txt | No File(s) Found! | importFromFileBtn
            importFromTextBtn | a.jpg          | No File(s) Found! | importFromTextBtn)");
    }

    void refusesToImportNothing()
    {
        QFETCH(const QString, method);
        QFETCH(const QString, text);
        click(qPrintable(method));
        fileField().setText(text);
        area().setPlainText(text);
        alerts().setNextAnswer(0);
        QTest::keyClick(&part(qPrintable(method)), Qt::Key_Return);
        QTEST(alerts().lastText(), "message");
        QCOMPARE(alerts().lastTitle(), u"Pagestack"_s);
        QTEST(sheet().focusWidget()->objectName(), "focus");
        QVERIFY(sheet().isVisible() && !controller().isProcessing());
    }

    void importsFromTheFileChosen()
    {
        write(path(u"list.txt"_s), "/b.tif\n/a.tiff\n/b.tif\n");
        chooser().setNextChoice({});
        click("browseBtn");
        QCOMPARE(chooser().lastMessage(), u"Select Text File To Import:"_s);
        QCOMPARE(chooser().lastExtensions(), QStringList(u"txt"_s));
        QCOMPARE(fileField().text(), u""_s);
        chooser().setNextChoice(urlsOf({ path(u"list.txt"_s) }));
        click("browseBtn");
        QCOMPARE(fileField().text(), path(u"list.txt"_s));
        QVERIFY(paths().isEmpty()); // until Import
        QVERIFY(load([this] { click("importBtn"); }));
        QCOMPARE(names().join(u' '), u"b.tif a.tiff"_s);
        QVERIFY(!sheet().isVisible());
        QCOMPARE(alerts().askedCount(), 0);
    }

    void opensEmptyWithTheSameMethod()
    {
        click("importFromTextBtn");
        area().setPlainText(u"/a.tif"_s);
        QTest::keyClick(&sheet(), Qt::Key_Escape);
        QVERIFY(!sheet().isVisible() && !controller().isProcessing());
        press("importAction");
        QVERIFY(entered().isEmpty() && paths().isEmpty());
        QCOMPARE(found(), u"Total Files Found : 0"_s);
        QVERIFY(part<QAbstractButton>("importFromTextBtn").isChecked());
    }

private:
    ImportFilesWindowController& sheet() const
    {
        return find<ImportFilesWindowController>("ImportFiles");
    }
    template <typename T = QWidget>
    T& part(const char* name) const
    {
        return childOf<T>(sheet(), name);
    }
    void click(const char* button) const { part<QAbstractButton>(button).click(); }
    QPlainTextEdit& area() const { return part<QPlainTextEdit>("importText"); }
    QLineEdit& fileField() const { return part<QLineEdit>("importFile"); }
    QString entered() const { return area().toPlainText(); }
    QString found() const { return part<QLabel>("totalFilesFound").text(); }
    QString leftOut() const { return part<QLabel>("linesLeftOut").text(); }
    QStringList paths() const
    {
        QStringList result;
        for (const QUrl& url : sheet().files())
            result.append(url.toLocalFile());
        return result;
    }
};

QTEST_MAIN(ImportTest)
#include "ImportTest.moc"
