#include "engine/sources/PathList.h"
#include "mainwindow/import/ImportFilesWindowController.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "tests/support/Testing.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
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

/// The dialog on a window, and who takes what it finds.
struct Sheet : ImportFilesWindowControllerDelegate
{
    Sheet()
    {
        dialog.setDelegate(this);
        dialog.setAllowedTypes(types);
        window.show();
        dialog.open();
    }

    void ImportFilesWindowControllerDidFinish(ImportFilesWindowController& sender) override
    {
        taken.append(pathsOf(sender));
        wasOpenWhenTaken = sender.isVisible();
    }
    static QStringList pathsOf(const ImportFilesWindowController& sender)
    {
        QStringList paths;
        for (const QUrl& url : sender.files())
            paths.append(url.toLocalFile());
        return paths;
    }
    template <typename T>
    T& find(const char* name)
    {
        T* const object = dialog.findChild<T*>(QLatin1StringView(name));
        if (object == nullptr)
            qFatal("the sheet has no %s", name);
        return *object;
    }
    void click(const char* button) { QTest::mouseClick(&find<QWidget>(button), Qt::LeftButton); }
    void choose(const char* radio) { find<QAbstractButton>(radio).click(); }
    QPlainTextEdit& area() { return find<QPlainTextEdit>("importText"); }
    QString text() { return area().toPlainText(); }
    QString file() { return find<QLineEdit>("importFile").text(); }
    QString found() { return find<QLabel>("totalFilesFound").text(); }
    QString leftOut() { return find<QLabel>("linesLeftOut").text(); }

    QWidget window;
    AlertPanel alerts;
    FileChooser chooser;
    ImportFilesWindowController dialog { &window, alerts, chooser };
    QList<QStringList> taken;
    bool wasOpenWhenTaken = false;
};

} // namespace

class ImportTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_folder.isValid() && QDir::setCurrent(m_folder.path())); }

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
        QElapsedTimer time;
        time.start();
        const PathList list = parsePathList(text, types);
        QVERIFY2(time.elapsed() < 20000, "a search of all files for each line takes minutes");
        QCOMPARE(list.files.size(), 60001);
        QCOMPARE(list.duplicates, 40000);
        QCOMPARE(countMissing(list.files, false), 60001); // the NUL included
        QCOMPARE(countMissing(list.files, true), 0);
    }

    void readsTextFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("found");
        QTest::newRow("no last line end") << QByteArray("/x.jpg\n/b.tif") << u"/b.tif"_s;
        QTest::newRow("CR LF") << QByteArray("/a.tif\r\n/b.tif\r\n") << u""_s;
        QTest::newRow("byte order mark")
            << QByteArray("\xEF\xBB\xBF/\xC3\xBC.tif") << u"/\u00fc.tif"_s;
        QTest::newRow("Latin-1") << QByteArray("/a.tif\n/\xFC.tif\n") << u""_s;
        QTest::newRow("cut off in a letter") << QByteArray("/a.tif\n/b.tif\n\xC3") << u""_s;
        QTest::newRow("no file") << QByteArray() << u""_s;
    }

    void readsTextFiles()
    {
        QFETCH(const QByteArray, bytes);
        const QString file = path(bytes.isNull() ? u"none.txt"_s : u"list.txt"_s);
        if (!bytes.isNull())
            write(file, bytes);
        Sheet sheet;
        sheet.dialog.parseText(u"/left.tif"_s);
        sheet.dialog.parseFile(file);
        const QStringList paths = Sheet::pathsOf(sheet.dialog);
        QTEST(paths.join(u','), "found");
        QCOMPARE(sheet.found(), u"Total Files Found : %1"_s.arg(paths.size()));
        QCOMPARE(sheet.file(), file);
    }

    void enablesTheMethodChosen()
    {
        Sheet sheet;
        QPalette palette = sheet.dialog.palette();
        palette.setColor(QPalette::Base, Qt::yellow);
        sheet.dialog.setPalette(palette);
        auto& area = sheet.area();
        const auto check = [&](int method) {
            for (const char* name : { "importFile", "browseBtn" })
                QCOMPARE(sheet.find<QWidget>(name).isEnabled(), method == 0);
            for (const char* name : { "importText", "pasteFromClipboardBtn" })
                QCOMPARE(sheet.find<QWidget>(name).isEnabled(), method == 1);
            QCOMPARE(sheet.find<QAbstractButton>("importFromFileBtn").isChecked(), method == 0);
            QCOMPARE(sheet.find<QAbstractButton>("importFromTextBtn").isChecked(), method == 1);
            const QImage drawn = area.viewport()->grab().toImage();
            QCOMPARE(drawn.pixelColor(drawn.width() - 3, drawn.height() - 3),
                     palette.color(method == 1 ? QPalette::Base : QPalette::Window));
            QVERIFY(sheet.text().isEmpty());
            QVERIFY(sheet.file().isEmpty());
        };
        check(0);
        sheet.find<QLineEdit>("importFile").setText(u"list.txt"_s);
        sheet.choose("importFromTextBtn");
        QCOMPARE(sheet.dialog.focusWidget(), &sheet.find<QWidget>("importFromTextBtn"));
        check(1);
        area.setPlainText(u"/a.tif"_s);
        area.setFocus();
        QTest::keyClick(&area, Qt::Key_Tab);
        QVERIFY(sheet.dialog.focusWidget() != &area);
        sheet.choose("importFromFileBtn");
        QCOMPARE(sheet.dialog.focusWidget(), &sheet.find<QWidget>("importFromFileBtn"));
        check(0);
        sheet.dialog.importMethodChanged(&sheet.find<QAbstractButton>("cancelImportBtn")); // no tag
        check(-1);
    }

    void marksTheKeyLetters()
    {
        Sheet sheet;
        auto& fromFile = sheet.find<QAbstractButton>("importFromFileBtn");
        auto& fromText = sheet.find<QAbstractButton>("importFromTextBtn");
        auto& paste = sheet.find<QAbstractButton>("pasteFromClipboardBtn");
        QCOMPARE(keyLetterPosition(fromFile), fromFile.text().indexOf(u"File"_s));
        QCOMPARE(keyLetterPosition(fromText), fromText.text().indexOf(u"Text"_s));
        QCOMPARE(keyLetterPosition(paste), 0);
        QCOMPARE(keyLetterPosition(sheet.find<QAbstractButton>("importBtn")), 0);

        paste.setText(u"oPap Paper"_s);
        const auto mark
            = [&](const QString& letter, int occurrance, const QColor& color = Qt::black) {
                  sheet.dialog.setButtonKeyCharacter(&paste, letter, color, occurrance);
                  return keyLetterPosition(paste);
              };
        QCOMPARE(mark(u"p"_s, 1), 1);
        QCOMPARE(mark(u"p"_s, 2), 7);
        QCOMPARE(mark(u"P"_s, 3), 5);
        QCOMPARE(mark(u"O"_s, 2), 5); // what is not there leaves the letter where it is
        QCOMPARE(mark(u""_s, 1), 5);
        QCOMPARE(mark(u"o"_s, 1, QColor()), 5);
        sheet.dialog.setButtonKeyCharacter(nullptr, u"o"_s, Qt::black, 1);
#ifndef Q_OS_MACOS
        QVERIFY(QTest::qWaitForWindowActive(&sheet.dialog));
        QTest::keyClick(&sheet.dialog, Qt::Key_T, Qt::AltModifier);
        QTRY_VERIFY(fromText.isChecked());
#endif
    }

    void pastesTheFilesAlone()
    {
        Sheet sheet;
        sheet.choose("importFromTextBtn");
        auto& area = sheet.area();
        area.setPlainText(u"/old.tif"_s);
        QClipboard& clipboard = *QGuiApplication::clipboard();
        clipboard.clear();
        sheet.click("pasteFromClipboardBtn");
        QCOMPARE(sheet.text(), u"/old.tif"_s);
        clipboard.setText(u"x\n/a.tif\n/none/b.tif\n/a.tif\n"_s);
        sheet.click("pasteFromClipboardBtn");
        QCOMPARE(sheet.text(), u"/a.tif\n/none/b.tif"_s);
        QCOMPARE(Sheet::pathsOf(sheet.dialog), QStringList({ u"/a.tif"_s, u"/none/b.tif"_s }));
        QCOMPARE(sheet.found(), u"Total Files Found : 2"_s);
        QTRY_COMPARE(sheet.leftOut(),
                     u"1 duplicate, 1 line that is no TIFF file, 2 files that do not exist"_s);
        QVERIFY(!sheet.dialog.findChild<QTimer*>()->isActive()); // nothing is to replace this text
        clipboard.setText(u"/c.jpg\r\n"_s);
        sheet.click("pasteFromClipboardBtn");
        QCOMPARE(sheet.text(), u""_s);
        QCOMPARE(sheet.found(), u"Total Files Found : 0"_s);
        area.undo();
        QCOMPARE(sheet.text(), u"/a.tif\n/none/b.tif"_s);
    }

    void saysWhatIsLeftOutWhileTyping()
    {
        write(path(u"here.tif"_s), "x");
        write(path(u"no\u00a0break.tif"_s), "x");
        Sheet sheet;
        sheet.choose("importFromTextBtn");
        auto& area = sheet.area();
        area.setPlainText(u"here.tif\nno\u00a0break.tif\n"_s);
        QTRY_COMPARE(sheet.found(), u"Total Files Found : 2"_s);
        area.appendPlainText(u"here.tif\nhere.tif\ngone.tif\nc\nd\ne"_s);
        QTRY_COMPARE(sheet.leftOut(),
                     u"2 duplicates, 3 lines that are no TIFF files, 1 file that does not exist"_s);
        QVERIFY(sheet.dialog.files().isEmpty()); // until Import
        area.setPlainText(u"here.tif"_s);
        QTRY_COMPARE(sheet.leftOut(), u""_s);
        QTest::keyClick(&area, Qt::Key_Return); // a new line, not Import
        QVERIFY(sheet.dialog.isVisible());
        sheet.dialog.parseText(u"gone.tif"_s);
        sheet.choose("importFromFileBtn");
        sheet.dialog.findChild<QThreadPool*>()->waitForDone();
        QCoreApplication::processEvents(); // brings what the check has to tell of a text that is
                                           // gone
        QCOMPARE(sheet.found(), u"Total Files Found : 0"_s);
        QCOMPARE(sheet.leftOut(), u""_s);
    }

    void refusesToImportNothing_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QString>("entered");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QByteArray>("focus");
        const QByteArray file("importFromFileBtn");
        const QByteArray text("importFromTextBtn");
        const QString nothing = u"No File(s) Found!"_s;
        QTest::newRow("no file") << file << u""_s << u"Please select file to import!"_s
                                 << QByteArray("browseBtn");
        QTest::newRow("no text") << text << u""_s << u"Please paste file(s) path to import!"_s
                                 << QByteArray("importText");
        QTest::newRow("unreadable file") << file << u"/none/list.txt"_s << nothing << file;
        QTest::newRow("no TIFF names") << text << u"a.jpg"_s << nothing << text;
    }

    void refusesToImportNothing()
    {
        QFETCH(const QByteArray, method);
        QFETCH(const QString, entered);
        QFETCH(const QByteArray, focus);
        Sheet sheet;
        sheet.choose(method);
        sheet.find<QLineEdit>("importFile").setText(entered);
        sheet.area().setPlainText(entered);
        sheet.alerts.setNextAnswer(0);
        QTest::keyClick(&sheet.find<QWidget>(method), Qt::Key_Return);
        QTEST(sheet.alerts.lastText(), "message");
        QCOMPARE(sheet.alerts.lastTitle(), u"Pagestack"_s);
        QCOMPARE(sheet.dialog.focusWidget(), &sheet.find<QWidget>(focus));
        QVERIFY(sheet.dialog.isVisible() && sheet.taken.isEmpty());
    }

    void importsFromTheFileChosen()
    {
        write(path(u"list.txt"_s), "/b.tif\n/a.tiff\n/b.tif\n");
        Sheet sheet;
        sheet.chooser.setNextChoice({});
        sheet.click("browseBtn");
        QCOMPARE(sheet.chooser.lastMessage(), u"Select Text File To Import:"_s);
        QCOMPARE(sheet.chooser.lastExtensions(), QStringList(u"txt"_s));
        QCOMPARE(sheet.file(), u""_s);
        sheet.chooser.setNextChoice({ QUrl::fromLocalFile(path(u"list.txt"_s)) });
        sheet.click("browseBtn");
        QCOMPARE(sheet.file(), path(u"list.txt"_s));
        QVERIFY(sheet.dialog.files().isEmpty()); // until Import
        sheet.click("importBtn");
        QCOMPARE(sheet.taken, QList({ QStringList { u"/b.tif"_s, u"/a.tiff"_s } }));
        QVERIFY(sheet.wasOpenWhenTaken);
        QVERIFY(!sheet.dialog.isVisible());
        QCOMPARE(sheet.alerts.askedCount(), 0);
    }

    void opensEmptyWithTheSameMethod()
    {
        Sheet sheet;
        sheet.choose("importFromTextBtn");
        for (const bool isImport : { false, true }) {
            sheet.area().setPlainText(u"/a.tif"_s);
            if (isImport)
                sheet.click("importBtn");
            else
                QTest::keyClick(&sheet.dialog, Qt::Key_Escape);
            QVERIFY(!sheet.dialog.isVisible());
            QCOMPARE(sheet.taken.size(), isImport ? 1 : 0);
            sheet.dialog.resetView();
            sheet.dialog.open();
            QCOMPARE(sheet.text(), u""_s);
            QVERIFY(sheet.dialog.files().isEmpty());
            QCOMPARE(sheet.found(), u"Total Files Found : 0"_s);
            QVERIFY(sheet.find<QAbstractButton>("importFromTextBtn").isChecked());
        }
    }

    void choosesAFileToWrite()
    {
        QWidget window;
        FileChooser chooser;
        QStringList chosen;
        const auto done
            = [&](const QList<QUrl>& urls) { chosen.append(urls.value(0).toLocalFile()); };
        chooser.setNextChoice({});
        chooser.chooseSaveFile(&window, u"Save"_s, u"txt"_s, u"list"_s, done);
        QCOMPARE(chosen, QStringList(u""_s));
        chooser.chooseSaveFile(&window, u"Save"_s, u"txt"_s, u"list new"_s, done);
        auto* const dialog = window.findChild<QFileDialog*>();
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
        QVERIFY(!dialog->testOption(QFileDialog::DontConfirmOverwrite));
        static_cast<QDialog*>(dialog)
            ->accept(); // what the button does; protected in the class itself
        QCOMPARE(chosen.value(1), path(u"list new.txt"_s));
    }

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

QTEST_MAIN(ImportTest)
#include "ImportTest.moc"
