#include "engine/options/Presets.h"
#include "mainwindow/run/ProcessPanel.h"
#include "tests/mainwindow/Session.h"

#include <QComboBox>
#include <QInputDialog>
#include <QMenu>
#include <QPushButton>

/// The tab of further options, and the presets.
class MoreTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }

    /// An option that is shown and not handed on, and one that is forgotten with the program.
    void takesWhatIsTyped()
    {
        auto& field = find<QLineEdit>("expect-dpi");
        field.setText(u"300"_s);
        QVERIFY(controller().applicationShouldTerminate());
        end();
        start();
        QCOMPARE(find<QLineEdit>("expect-dpi").text(), u"300"_s);
        QVERIFY(open({ sample(u"gray-photo.tif"_s) }));
        settings().setOutputFolderPath(outFolder());
        press("convertBtn");
        QVERIFY(waitForRun());
        const QModelIndex name = table().model()->index(0, FileTableModel::Name);
        QVERIFY(name.data(Qt::ToolTipRole).toString().contains(u"300 were expected"_s));
        press("closeProcessBtn");
    }

    /// A run with other options than those that are shown.
    void refusesWhatItCannotTake()
    {
        QVERIFY(open({ sample(u"gray-photo.tif"_s) }));
        settings().setOutputFolderPath(outFolder());
        find<QLineEdit>("expect-dpi").setText(u"0x"_s);
        alerts().setNextAnswer(0);
        press("convertBtn");
        QCOMPARE(alerts().lastText(), u"Expect-dpi '0x' is no number from 1 to 100000"_s);
        QCOMPARE(text("expect-dpi-fault"), alerts().lastText());
        QCOMPARE(find<QTabWidget>("settingTabView").currentIndex(), 2);
        QVERIFY(QDir(outFolder()).isEmpty());
    }

    /// A preset that changes some of the options only, or that comes back as another.
    void keepsPresets()
    {
        choose(u"Legal production (G4, 300 dpi, one file a page, numbered)"_s);
        QCOMPARE(find<QComboBox>("outputType").currentText(), u"TIFF"_s);
        QCOMPARE(find<QComboBox>("tiffCompressionPopup").currentText(), u"CCITT Group 4"_s);
        QCOMPARE(find<QLineEdit>("expect-dpi").text(), u"300"_s);
        settings().setSeparator(u"_"_s);
        save(u"Mine: 1/2"_s);
        choose(u"Web (JPEG 8, sRGB)"_s);
        QCOMPARE(find<QComboBox>("outputType").currentText(), u"JPEG"_s);
        QCOMPARE(settings().jpegQuality(), 8);
        QCOMPARE(find<QLineEdit>("expect-dpi").text(), u""_s);
        end();
        start();
        choose(u"Mine: 1/2"_s);
        QCOMPARE(find<QLineEdit>("expect-dpi").text(), u"300"_s);
        QCOMPARE(settings().separator(), u"_"_s);
        QCOMPARE(findPreset(u"Mine: 1/2"_s).options.separator, u"_"_s); // of the command line, too
        chooser().setNextChoice(urlsOf({ path(u"out.json"_s) }));
        choose(u"Export..."_s);
        choose(u"Web (JPEG 8, sRGB)"_s);
        chooser().setNextChoice(urlsOf({ path(u"out.json"_s) }));
        choose(u"Import..."_s);
        choose(u"out"_s);
        QCOMPARE(settings().separator(), u"_"_s);
        menu().actions().last()->menu()->actions().first()->trigger();
        QVERIFY(action(u"Mine: 1/2"_s) == nullptr);
    }

    /// A file that cannot be read, and a name that is taken, lose what is there.
    void tellsOfPresetsThatItCannotTake()
    {
        save(u"a"_s);
        settings().setOutputType(3);
        alerts().setNextAnswer(1);
        save(u"a"_s);
        QCOMPARE(alerts().lastText(), u"There is a preset a already."_s);
        QCOMPARE(findPreset(u"a"_s).options.outputType, OutputType::Jpeg);
        alerts().setNextAnswer(0);
        save(u"Web (JPEG 8, sRGB)"_s);
        QCOMPARE(alerts().lastText(), u"The preset Web (JPEG 8, sRGB) comes with the program"_s);
        QFile file(path(u"b.json"_s));
        QVERIFY(file.open(QIODevice::WriteOnly)
                && file.write(R"({"name": "b", "options": {"qualty": 1}})") > 0);
        file.close();
        chooser().setNextChoice(urlsOf({ path(u"b.json"_s) }));
        alerts().setNextAnswer(0);
        choose(u"Import..."_s);
        QVERIFY(alerts().lastText().endsWith(u"b.json: there is no option 'qualty'"_s));
    }

    /// Options of another format that are offered, and a name that the run does not give.
    void showsWhatTheFormatMakes_data()
    {
        addTextRows(R"(
            0 | jpegQualitySlider fileNameSeparatorText digits | b1.jpg
            1 | fileNameSeparatorText digits bilevel           | b1.png
            2 | tiffCompressionPopup splitTiffCheckbox bilevel | b.tiff
            3 | fileNameSeparatorText digits bilevel           | b1.bmp)");
    }

    void showsWhatTheFormatMakes()
    {
        const auto [format, controls, example] = textRow<3>();
        QVERIFY(openFiles({ { "a.tif", 1 }, { "b.tif", 1 } }));
        settings().setOutputType(format.toInt());
        controller().tableModel().mark({ 0 }, FileTableModel::Mark::Uncheck);
        QStringList shown;
        for (const char* name : { "jpegQualitySlider", "tiffCompressionPopup", "splitTiffCheckbox",
                                  "fileNameSeparatorText", "digits", "bilevel" })
            if (find(name).isVisible() && isEnabled(name))
                shown.append(QLatin1StringView(name));
        QCOMPARE(shown.join(u' '), controls);
        QTRY_COMPARE(text("outputExampleLabel"), u"b.tif \u2192 "_s + example);
    }

    /// A folder that is not offered again, and defaults that leave something behind.
    void offersFoldersAndDefaults()
    {
        for (const QString& name : { u"one"_s, u"t&wo"_s }) {
            QDir().mkpath(path(name));
            chooser().setNextChoice(urlsOf({ path(name) }));
            press("chooseOutputFolderBtn");
        }
        auto& button = find<QPushButton>("recentFoldersBtn");
        emit button.menu()->aboutToShow();
        QCOMPARE(button.menu()->actions().value(0)->isChecked(), true);
        button.menu()->actions().value(1)->trigger();
        QCOMPARE(settings().outputFolderPath(), path(u"one"_s));

        choose(u"Legal production (G4, 300 dpi, one file a page, numbered)"_s);
        find<QLineEdit>("pages").setText(u"x"_s);
        alerts().setNextAnswer(0);
        press("restoreDefaultsBtn");
        QCOMPARE(settings().outputType(), 0);
        QCOMPARE(settings().outputFolderPath(), path(u"one"_s));
        for (const char* name : { "expect-dpi", "pages", "name" })
            QCOMPARE(find<QLineEdit>(name).text(), u""_s);
        QVERIFY(find<QAbstractButton>("keep-record").isChecked());
    }

private:
    QMenu& menu() const
    {
        QMenu& menu = *find<QPushButton>("presetsBtn").menu();
        emit menu.aboutToShow();
        return menu;
    }
    QAction* action(const QString& text) const
    {
        const QList<QAction*> actions = menu().actions();
        const auto found = std::ranges::find(actions, text, &QAction::text);
        return found == actions.end() ? nullptr : *found;
    }
    void choose(const QString& text) const
    {
        QAction* chosen = action(text);
        QVERIFY2(chosen != nullptr, qPrintable(text));
        chosen->trigger();
    }
    void save(const QString& name) const
    {
        choose(u"Save As..."_s);
        auto& dialog = find<QInputDialog>();
        dialog.setTextValue(name);
        dialog.accept();
        QCoreApplication::sendPostedEvents(&dialog, QEvent::DeferredDelete);
    }
};

QTEST_MAIN(MoreTest)
#include "MoreTest.moc"
