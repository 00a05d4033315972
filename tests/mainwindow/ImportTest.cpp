#include "engine/sources/PathList.h"
#include "mainwindow/import/ImportFilesWindowController.h"
#include "tests/mainwindow/Session.h"

#include <QPlainTextEdit>
#include <QThreadPool>

/// The sheet of the real window that takes paths from a file or a text.
class ImportTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { takeNewFolder(); }
    void init()
    {
        start();
        press("importAction");
    }

    void findsTheFilesThatATextNames_data()
    {
        // '^' ends a line, '&' is a tab, '@' is the current folder; then duplicates and lines that
        // are no files.
        addTextRows(R"(
                                                |                                     | 0 0
            /a.Tif^/b.tiff^/c.TIFF^/f.tIfF      | /a.Tif,/b.tiff,/c.TIFF,/f.tIfF      | 0 0
            /d.tif ^/e.jpg^/tif^/x.tif/y^/.tif^/z.^'/q.tif' |                         | 0 7
            ^^  ^/a.tif^^                       | /a.tif                              | 0 0
            /b.tif^/a.tif^/b.tif^/B.tif^/b.tif  | /b.tif,/a.tif,/B.tif                | 2 0
            a.tif^./a.tif^@//./a.tif^/x/../a.tif | @/a.tif,/x/../a.tif                | 2 0
            ../b.tif^~/c.tif^C:/d.tif^:/e.tif   | @/../b.tif,@/~/c.tif,@/C:/d.tif,@/:/e.tif | 0 0
            x^ /a.tif                           | @/ /a.tif                           | 0 1
            /a%20b#c?d;.tif^/ü 日.tif           | /a%20b#c?d;.tif,/ü 日.tif           | 0 0
            //two words/x.tif                   | /two words/x.tif                    | 0 0
            /scans.tif/                         | /scans.tif/                         | 0 0
            /a.tif&1,-2^/a.tif^/b.tif&^/c.tif&0^/d.png&1 | /a.tif 1,-2                | 1 3
            a&1.tif^n.tif&2&&&&&&/x^m.tif&&&&&&&/x&2- | @/a&1.tif,/x/n.tif,/x/m.tif 2- | 0 0)");
    }

    void findsTheFilesThatATextNames()
    {
        auto [text, paths, counts] = textRow<3>();
        text.replace(u'^', u'\n').replace(u'&', u'\t').replace(u'@', QDir::currentPath());
        const PathList list = parsePathList(text, u"tif,TIF,tiff,TIFF"_s);
        QString found = pathsOf(list.files);
        for (const auto& [file, pages] : list.pageChoices.asKeyValueRange())
            found.replace(file.toLocalFile(), file.toLocalFile() + u' ' + pages);
        QCOMPARE(found, paths.replace(u'&', u'\t').replace(u'@', QDir::currentPath()));
        QCOMPARE(u"%1 %2"_s.arg(list.duplicates).arg(list.otherLines), counts);
        QVERIFY(parsePathList(text, u""_s).files.isEmpty());
    }

    void readsTextFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("paths");
        QTest::newRow("carriage returns") << "/a.tif\r\n\r\n/b.tif"_ba << u"/b.tif"_s;
        QTest::newRow("other line ends")
            << "/a\xE2\x80\xA8 b.tif\v/c.tif"_ba << u"/a\u2028 b.tif\v/c.tif"_s;
        QTest::newRow("byte order mark") << "\xEF\xBB\xBF/\xC3\xBC.tif"_ba << u"/\u00fc.tif"_s;
        QTest::newRow("Latin-1") << "/a.tif\n/\xFC.tif\n"_ba << u""_s;
        QTest::newRow("cut off in a letter") << "/a.tif\n/b.tif\n\xC3"_ba << u""_s;
    }

    void readsTextFiles()
    {
        QFETCH(const QByteArray, bytes);
        const QString file = path(u"list.txt"_s);
        putBytes(file, bytes);
        sheet().parseText(u"/left.tif"_s);
        sheet().parseFile(file);
        QTEST(paths(), "paths");
        QCOMPARE(found(), u"Total Files Found : %1"_s.arg(sheet().files().size()));
        QCOMPARE(file, fileField().text());
    }

    void readsNoListWithoutEnd()
    {
        QFile file(path(u"list.txt"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize((qint64 { 256 } << 20) + 1));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, readPathList(file.fileName()));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, readPathList(u"/dev/null"_s));
    }

    void pastesTheFilesAlone()
    {
        click("importFromFileBtn");
        QVERIFY(!part("pasteFromClipboardBtn").isEnabled());
        click("importFromTextBtn");
        area().setPlainText(u"/old.tif"_s);
        QClipboard& clipboard = *QGuiApplication::clipboard();
        clipboard.clear();
        click("pasteFromClipboardBtn");
        QCOMPARE(entered(), u"/old.tif"_s);
        clipboard.setText(u"x\n/a.tif\n/none/b.tif\n/a.tif\n"_s);
        click("pasteFromClipboardBtn");
        QCOMPARE(entered(), u"/a.tif\n/none/b.tif"_s);
        QCOMPARE(paths(), u"/a.tif,/none/b.tif"_s);
        QCOMPARE(found(), u"Total Files Found : 2"_s);
        QTRY_COMPARE(leftOut(),
                     u"1 duplicate, 1 line that is no TIFF file, 2 files that do not exist"_s);
        area().undo();
        QCOMPARE(entered(), u"/old.tif"_s);
    }

    void saysWhatIsLeftOutWhileTyping()
    {
        makeFile(path(u"here.tif"_s));
        makeFile(path(u"no\u00a0break.tif"_s));
        click("importFromTextBtn");
        area().setPlainText(u"here.tif\nno\u00a0break.tif\n"_s);
        area().appendPlainText(u"here.tif\nhere.tif\ngone.tif\nc\nd\ne"_s);
        QTRY_COMPARE(leftOut(),
                     u"2 duplicates, 3 lines that are no TIFF files, 1 file that does not exist"_s);
        QVERIFY(paths().isEmpty()); // until Import
        QTest::keyClick(&area(), Qt::Key_Return); // a new line, not Import
        QVERIFY(sheet().isVisible());
        sheet().parseText(u"gone.tif"_s);
        click("importFromFileBtn");
        sheet().findChild<QThreadPool*>()->waitForDone();
        QCoreApplication::processEvents(); // what the check has to tell of a text that is gone
        QCOMPARE(found(), u"Total Files Found : 0"_s);
        QCOMPARE(leftOut(), u""_s);
    }

    void refusesToImportNothing()
    {
        for (const auto& [method, text, message] :
             { std::tuple("importFromFileBtn", u""_s, u"Please select file to import!"_s),
               std::tuple("importFromTextBtn", u""_s, u"Please paste file(s) path to import!"_s),
               std::tuple("importFromFileBtn", u"/none/list.txt"_s, u"No File(s) Found!"_s),
               std::tuple("importFromTextBtn", u"a.jpg"_s, u"No File(s) Found!"_s) }) {
            click(method);
            fileField().setText(text);
            area().setPlainText(text);
            alerts().setNextAnswer(0);
            QTest::keyClick(&part(method), Qt::Key_Return);
            QCOMPARE(alerts().lastText(), message);
            if (message.startsWith(u"Please"_s))
                QCOMPARE(sheet().focusWidget(),
                         &part(message.contains(u"file to"_s) ? "browseBtn" : "importText"));
            QVERIFY(sheet().isVisible() && !controller().isProcessing());
        }
    }

    // A method that is chosen by its letter or the arrows and leaves the other one on.
    void choosesAMethod()
    {
        auto& file = part<QAbstractButton>("importFromFileBtn");
        auto& text = part<QAbstractButton>("importFromTextBtn");
        const auto state = [&] {
            QString result;
            for (const QWidget* control :
                 { static_cast<QWidget*>(&fileField()), &part("browseBtn"),
                   static_cast<QWidget*>(&area()), &part("pasteFromClipboardBtn") })
                result += control->isEnabled() ? u'x' : u'-';
            return result + (file.isChecked() ? u'F' : u'-') + (text.isChecked() ? u'T' : u'-');
        };
        const auto ground = [this] { return area().viewport()->backgroundRole(); };
        QCOMPARE(state(), u"xx--F-"_s);
        QCOMPARE(ground(), QPalette::Window);
        fileField().setText(u"/list.txt"_s);
        QVERIFY(QTest::qWaitForWindowActive(&sheet()));
        file.setFocus();
        QTest::keyClick(&file, Qt::Key_Down);
        QCOMPARE(state(), u"--xx-T"_s);
        QCOMPARE(ground(), QPalette::Base);
        QCOMPARE(sheet().focusWidget(), &text);
        QCOMPARE(fileField().text(), QString());
        area().setPlainText(u"/a.tif"_s);
        QTRY_COMPARE(found(), u"Total Files Found : 1"_s);
        QTest::keyClick(&text, Qt::Key_Up);
        QCOMPARE(state(), u"xx--F-"_s);
        QVERIFY(entered().isEmpty());
        QCOMPARE(found(), u"Total Files Found : 0"_s);
        QObject* const other = &part("importBtn"); // has no tag
        sheet().importMethodChanged(qobject_cast<QAbstractButton*>(other));
        QCOMPARE(state(), u"------"_s);
        click("importFromTextBtn");
        sheet().importMethodChanged(qobject_cast<QAbstractButton*>(other));
        QCOMPARE(state(), u"------"_s);
        QCOMPARE(sheet().findChild<QThreadPool*>()->maxThreadCount(), 1); // one disk
        for (const auto& [button, letter] :
             { std::pair("importFromFileBtn", "F"), std::pair("importFromTextBtn", "T"),
               std::pair("pasteFromClipboardBtn", "P"), std::pair("importBtn", "I") })
            QCOMPARE(part<QAbstractButton>(button).shortcut(),
                     QKeySequence(u"Alt+"_s + QLatin1StringView(letter)));
        QCOMPARE(sheet().windowModality(), Qt::WindowModal);
    }

    // What was chosen or found the last time.
    void beginsEmptyEachTime()
    {
        fileField().setText(u"/list.txt"_s);
        sheet().parseText(u"/a.tif\t1\n/b.tif"_s);
        QCOMPARE(sheet().pageChoices().size(), 1);
        QTest::keyClick(&sheet(), Qt::Key_Escape);
        press("importAction");
        QCOMPARE(fileField().text(), QString());
        QVERIFY(sheet().files().isEmpty() && sheet().pageChoices().isEmpty());
        QCOMPARE(found(), u"Total Files Found : 0"_s);
        click("importFromTextBtn");
        QGuiApplication::clipboard()->setText(u"/a.tif\t1\n/b.tif\nx"_s);
        click("pasteFromClipboardBtn");
        QCOMPARE(entered(), u"/a.tif\t1\n/b.tif"_s);
        QTRY_VERIFY(leftOut().endsWith(u"2 files that do not exist"_s));
        // What was left out of the text is told until something is typed.
        QVERIFY(leftOut().startsWith(u"1 line that is no TIFF file"_s));
        area().insertPlainText(u"\n/c.tif"_s);
        QTRY_COMPARE(found(), u"Total Files Found : 3"_s);
    }

    void importsFromTheFileChosen()
    {
        putBytes(path(u"list.txt"_s), "/b.tif\n/none\n/a.tiff\n/b.tif\n");
        chooser().setNextChoice({});
        click("browseBtn");
        QCOMPARE(chooser().lastMessage(), u"Select Text File To Import:"_s);
        QCOMPARE(chooser().lastExtensions(), QStringList(u"txt"_s));
        QCOMPARE(fileField().text(), u""_s);
        for (int round = 0; round < 2; ++round) { // the second time everything is there already
            QVERIFY(sheet().isVisible() && paths().isEmpty());
            chooser().setNextChoice(urlsOf({ path(u"list.txt"_s) }));
            click("browseBtn");
            QCOMPARE(fileField().text(), path(u"list.txt"_s));
            QVERIFY(paths().isEmpty()); // until Import
            QVERIFY(load([this] { click("importBtn"); }));
            QCOMPARE(names().join(u' '), u"b.tif a.tiff"_s);
            QVERIFY(!sheet().isVisible());
            press("importAction");
        }
        QCOMPARE(alerts().askedCount(), 0);
        click("importFromTextBtn");
        area().setPlainText(u"/a.tif"_s);
        QTest::keyClick(&sheet(), Qt::Key_Escape);
        QVERIFY(!sheet().isVisible() && !controller().isProcessing());
        press("importAction"); // by the same method, but empty
        QVERIFY(entered().isEmpty() && paths().isEmpty());
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
    QString paths() const { return pathsOf(sheet().files()); }
    static QString pathsOf(const QList<QUrl>& files)
    {
        QStringList result;
        for (const QUrl& url : files)
            result.append(url.isLocalFile() ? url.toLocalFile() : u"no file"_s);
        return result.join(u',');
    }
};

QTEST_MAIN(ImportTest)
#include "ImportTest.moc"
