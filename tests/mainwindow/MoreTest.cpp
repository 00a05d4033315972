#include "engine/options/Presets.h"
#include "mainwindow/run/ProcessPanel.h"
#include "tests/mainwindow/Session.h"

#include <QComboBox>
#include <QHeaderView>
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
        QVERIFY(find("expect-dpi-fault").isVisible());
        QCOMPARE(find<QTabWidget>("settingTabView").currentIndex(), 2);
        find<QLineEdit>("expect-dpi").clear();
        for (const QString& pattern : { u"{page}{"_s, u"."_s }) { // a fault of itself, of the name
            find<QLineEdit>("name").setText(pattern);
            table().setFocus();
            alerts().setNextAnswer(0);
            press("convertBtn");
            QVERIFY(alerts().lastText().startsWith(u"Name '%1'"_s.arg(pattern)));
            QCOMPARE(window().focusWidget(), &find("name"));
        }
        QVERIFY(QDir(outFolder()).isEmpty());
        find<QLineEdit>("name").clear();
        find<QTabWidget>("settingTabView").setCurrentIndex(1);
        choose(u"Save As..."_s); // nothing is wrong any more, and no field asks for the user
        find<QInputDialog>().reject();
        QCOMPARE(find<QTabWidget>("settingTabView").currentIndex(), 1);
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
        const QByteArray stored = bytesOf(path(u"settings.json"_s));
        choose(u"Web (JPEG 8, sRGB)"_s);
        QVERIFY(bytesOf(path(u"settings.json"_s)) != stored); // at once
        QCOMPARE(find<QComboBox>("outputType").currentText(), u"JPEG"_s);
        QCOMPARE(settings().jpegQuality(), 8);
        QVERIFY(action(u"Web (JPEG 8, sRGB)"_s)->isChecked());
        find<QLineEdit>("fileNameSeparatorText").setText(u"q"_s);
        menu(); // takes over what is typed
        QCOMPARE(settings().separator(), u"q"_s);
        settings().setJpegQuality(7);
        QVERIFY(!action(u"Web (JPEG 8, sRGB)"_s)->isChecked());
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

    /// Options that nobody can tell apart or reach, and hints that are missing.
    void laysOutTheOptions()
    {
        int sections = 0;
        find<QTabWidget>("settingTabView").setCurrentIndex(2);
        QCoreApplication::sendPostedEvents();
        for (const auto* label : find("moreTab").findChildren<QLabel*>()) {
            if (!label->font().bold())
                continue;
            int above = 0; // the end of what is above it
            for (const auto* part : label->parentWidget()->findChildren<QWidget*>())
                if (part->isVisible() && part->y() < label->y())
                    above = std::max(above, part->geometry().bottom());
            QCOMPARE(above > 0 && label->y() - above > 12, sections++ > 0);
        }
        QSet<QString> titles;
        for (const ConversionOptionRow& row : conversionOptionTable()) {
            if (row.label.isEmpty())
                continue;
            QWidget& control = find(qPrintable(row.name));
            QVERIFY(!control.toolTip().isEmpty());
            if (find("moreTab").isAncestorOf(&control))
                titles.insert(row.section);
            for (const auto* label : control.parentWidget()->findChildren<QLabel*>())
                if (label->buddy() == &control && label->isVisible()) // beside it
                    QVERIFY(label->y() < control.geometry().bottom()
                            && label->geometry().bottom() > control.y());
            if (const auto* line = qobject_cast<QLineEdit*>(&control)) {
                QCOMPARE(line->placeholderText(), row.placeholder);
                QVERIFY(line->isClearButtonEnabled());
            }
            const auto* popup = qobject_cast<QComboBox*>(&control);
            QCOMPARE(popup != nullptr ? popup->count() : 0, int(row.choices.size()));
        }
        QCOMPARE(sections, int(titles.size()));
        QVERIFY(sections > 2);
        // A pop-up, a box and a field follow the options, whoever changes them.
        auto& bilevel = find<QComboBox>("bilevel");
        settings().setOutputType(1);
        bilevel.setCurrentIndex(1);
        emit bilevel.activated(1);
        save(u"of a popup"_s);
        bilevel.setCurrentIndex(0);
        emit bilevel.activated(0);
        find<QLineEdit>("name").setText(u"{page}{"_s);
        const auto isToldOfNames = [this] {
            return std::ranges::any_of(
                find("name").parentWidget()->findChildren<QLabel*>(), [](const QLabel* label) {
                    return label->isVisible() && label->text().startsWith(u"Name"_s)
                        && label->text().contains(u"{page}{"_s);
                });
        };
        find<QTabWidget>("settingTabView").setCurrentIndex(0);
        QVERIFY(isToldOfNames());
        choose(u"of a popup"_s);
        QCOMPARE(bilevel.currentIndex(), 1);
        QVERIFY(!isToldOfNames());
        QCOMPARE(find<QLineEdit>("name").text(), QString());
    }

    /// Numbers that a field takes as they are typed.
    void keepsFieldsToNumbers_data()
    {
        addTextRows(R"(
            30001 | 0   | 2
            30001 | x5x | 5
            30001 | 1a2 | 1a2
            30001 |     | 2
            30002 | 00x | 1
            30002 | 7   | 7
            30003 | x   | x)");
    }

    void keepsFieldsToNumbers()
    {
        const auto [tag, typed, shown] = textRow<3>();
        auto& field = find<QLineEdit>("fileNameSeparatorText");
        field.setProperty("tag", tag.toInt());
        field.setText(typed);
        table().setFocus();
        emit field.textEdited(typed);
        QCOMPARE(field.text(), shown);
        QCOMPARE(window().focusWidget() == &field, tag != u"30003");
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
        const int asked = alerts().askedCount();
        chooser().setNextChoice({}); // cancelled
        choose(u"Import..."_s);
        chooser().setNextChoice({});
        choose(u"Export..."_s);
        QCOMPARE(alerts().askedCount(), asked);
        // One that is damaged among those that are saved.
        const QString folder = path(u"data/Corvanta/Pagestack1/Presets/"_s);
        QVERIFY(QFile::copy(file.fileName(), folder + u"b&.json"_s));
        const auto isTrouble = [](const QAction* each) {
            return !each->isEnabled() && each->text().contains(u"b&&.json"_s);
        };
        QVERIFY(std::ranges::any_of(menu().actions(), isTrouble));
        // A typing error, before a preset is made of what was there before.
        find<QLineEdit>("expect-dpi").setText(u"0x"_s);
        for (const QString& command : { u"Save As..."_s, u"Export..."_s }) {
            alerts().setNextAnswer(0);
            choose(command);
            QVERIFY(alerts().lastText().startsWith(u"Expect-dpi '0x'"_s));
            QCOMPARE(window().focusWidget(), &find("expect-dpi"));
            QVERIFY(window().findChild<QInputDialog*>() == nullptr);
        }
        find<QLineEdit>("expect-dpi").clear();
        alerts().setNextAnswer(0);
        QVERIFY(QFile::remove(folder + u"a.json"_s) && QDir(folder).mkpath(u"a.json/x"_s));
        choose(u"Save As..."_s);
        auto& dialog = find<QInputDialog>();
        QCOMPARE(dialog.windowTitle() + dialog.labelText() + dialog.okButtonText(),
                 u"Save PresetName:Save"_s);
        QVERIFY(dialog.testAttribute(Qt::WA_DeleteOnClose));
        dialog.reject();
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
        QCOMPARE(find("bilevel").isVisible(), format.toInt() != 0);
        QCoreApplication::sendPostedEvents();
        QSet<int> edges; // fields begin at one
        for (const auto* label : find("formatPage").findChildren<QLabel*>())
            if (label->isVisible() && label->buddy() != nullptr && label->buddy()->isVisible())
                edges.insert(label->buddy()->mapTo(&window(), QPoint()).x());
        QCOMPARE(edges.size(), 1);
        QCOMPARE(find("formatNote").isVisible(), format.toInt() == 3);
        QCOMPARE(isEnabled("fileNameSeparatorLabel"), isEnabled("fileNameSeparatorText"));
        QTRY_COMPARE(text("outputExampleLabel"), u"b.tif \u2192 "_s + example);
        // It follows the list and the options.
        const auto isShown = [this](const QString& line) {
            return QTest::qWaitFor([&] { return text("outputExampleLabel") == line; });
        };
        controller().tableModel().mark({ 0 }, FileTableModel::Mark::Check);
        QVERIFY(isShown(u"a.tif \u2192 a"_s + example.sliced(1)));
        table().horizontalHeader()->setSortIndicator(FileTableModel::Name, Qt::DescendingOrder);
        QVERIFY(isShown(u"b.tif \u2192 "_s + example));
        settings().setIsSplitTIFFIntoSinglePages(true);
        settings().setSeparator(u"_"_s);
        QVERIFY(isShown(u"b.tif \u2192 b_1"_s + example.sliced(example.indexOf(u'.'))));
        settings().setSeparator(u""_s);
        settings().setIsSplitTIFFIntoSinglePages(false);
        QVERIFY(isShown(u"b.tif \u2192 "_s + example));
        find<QLineEdit>("name").setText(u"x{page}"_s);
        QVERIFY(isShown(u"b.tif \u2192 x"_s + (format == u"2" ? u""_s : u"1"_s)
                        + example.sliced(example.indexOf(u'.'))));
        find<QLineEdit>("name").clear();
        alerts().setNextAnswer(0);
        press("removeAllFilesButton");
        QVERIFY(isShown(u"scan.tif \u2192 "_s + QString(example).replace(0, 1, u"scan"_s)));
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
        QVERIFY(button.isEnabled());
        emit button.menu()->aboutToShow();
        emit button.menu()->aboutToShow(); // not twice as long
        QCOMPARE(button.menu()->actions().size(), 4);
        QCOMPARE(button.menu()->actions().value(0)->isChecked(), true);
        QCOMPARE(button.menu()->actions().value(1)->isChecked(), false);
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
        settings().setOutputType(1);
        alerts().setNextAnswer(1); // Cancel
        press("restoreDefaultsBtn");
        QCOMPARE(settings().outputType(), 1);
        end();
        start();
        QVERIFY(find("recentFoldersBtn").isEnabled());
        find<QPushButton>("recentFoldersBtn").menu()->actions();
        emit find<QPushButton>("recentFoldersBtn").menu()->aboutToShow();
        find<QPushButton>("recentFoldersBtn").menu()->actions().last()->trigger();
        QVERIFY(!find("recentFoldersBtn").isEnabled());
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
