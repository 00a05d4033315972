#include "mainwindow/desktop/InformationScript.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/ElidedLabel.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "tests/mainwindow/Session.h"

#include <QApplication>
#include <QLayout>
#include <QMenuBar>
#include <QToolButton>

namespace {

/// The letter after the first single '&' of `text`, upper case; empty without one.
QString mnemonicOf(const QString& text) { return QKeySequence::mnemonic(text).toString(); }

/// Whether the text of a label, a button or a field is cut off.
bool isCutOff(const QWidget& widget)
{
    QSize need = widget.minimumSizeHint();
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    if (label != nullptr && label->wordWrap())
        need.setHeight(label->heightForWidth(widget.width()));
    else if (label != nullptr || qobject_cast<const QAbstractButton*>(&widget) != nullptr)
        need = widget.sizeHint();
    const QSize visible = widget.visibleRegion().boundingRect().size();
    return visible.width() < need.width() || visible.height() < need.height();
}

} // namespace

class WidgetsTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
        QVERIFY(QTest::qWaitForWindowActive(&window()));
    }

    // Two owners of one key cancel each other out: neither answers.
    void givesEachAltKeyToOneControl()
    {
#ifdef Q_OS_MACOS
        QSKIP("Alt types characters here");
#endif
        QString letters;
        for (const char* name :
             { "removeBtn", "importBtn", "addFilesBtn", "addFolderBtn", "inculdeSubfoldersBtn",
               "convertBtn", "setCurrentAsDefaultOutputFolderPathBtn",
               "openFolderAfterConversionBtn", "viewLogBtn", "cancelProcessBtn" })
            letters += find<QAbstractButton>(name).shortcut().toString().last(1);
        QCOMPARE(letters, u"RIFOUSDPLC"_s);

        auto& tabs = find<QTabWidget>("settingTabView");
        for (int tab = 0; tab < tabs.count(); ++tab) {
            tabs.setCurrentIndex(tab);
            QSet<QString> keys;
            const auto take = [&](const QString& key, const QObject& owner) {
                QVERIFY2(key.isEmpty() || !keys.contains(key), qPrintable(owner.objectName()));
                keys.insert(key);
            };
            for (const QMenu* menu : window().menuBar()->findChildren<QMenu*>())
                take(mnemonicOf(menu->title()), *menu);
            for (const auto* label : window().findChildren<QLabel*>())
                if (label->buddy() != nullptr && label->buddy()->isVisible())
                    take(mnemonicOf(label->text()), *label);
            for (const auto* button : window().findChildren<QAbstractButton*>())
                if (button->isVisible())
                    take(button->shortcut().toString(), *button);
            QVERIFY(keys.size() > 10);
        }
        QTest::keyClick(&window(), Qt::Key_U, Qt::AltModifier);
        QTRY_VERIFY(find<QAbstractButton>("inculdeSubfoldersBtn").isChecked());
        for (const bool isBusy : { true, false }) {
            controller().resetView(!isBusy);
            chooser().setNextChoice({});
            QTest::keyClick(&window(), Qt::Key_O, Qt::AltModifier);
            QTRY_COMPARE(chooser().lastMessage().isEmpty(), isBusy);
        }
    }

    void cutsNothingOff()
    {
        const QFont before = QApplication::font();
        const auto atEnd = qScopeGuard([&] { QApplication::setFont(before); });
        QFont font = before;
        font.setPointSizeF(before.pointSizeF() * 1.5);
        QApplication::setFont(font);
        start();
        QVERIFY(QTest::qWaitForWindowExposed(&window()));
        for (int tab = 0; tab < 2; ++tab) {
            find<QTabWidget>("settingTabView").setCurrentIndex(tab);
            window().resize(window().minimumSizeHint());
            int checked = 0;
            for (const QWidget* widget : window().centralWidget()->findChildren<QWidget*>()) {
                const bool showsText = widget->inherits("QLabel") || widget->inherits("QComboBox")
                    || widget->inherits("QAbstractButton") || widget->inherits("QLineEdit");
                if (!showsText || !widget->isVisible() || widget->objectName().startsWith(u"qt_"_s)
                    || widget->objectName().isEmpty() || widget->parent()->inherits("QLineEdit"))
                    continue;
                ++checked;
                QTRY_VERIFY2(!isCutOff(*widget), qPrintable(widget->objectName()));
            }
            QVERIFY(checked > 20);
        }
    }

    void namesItsIcons()
    {
        for (const QToolButton* button : find("leftBox").findChildren<QToolButton*>())
            QVERIFY2(!button->icon().isNull() && !button->accessibleName().isEmpty()
                         && !button->toolTip().isEmpty(),
                     qPrintable(button->objectName()));
        for (const QAction* action : window().findChildren<QAction*>())
            QVERIFY2(!action->property("symbolicIcon").isValid() || !action->icon().isNull(),
                     qPrintable(action->objectName()));
        QVERIFY(symbolicIcon(u"no-such-icon"_s).isNull());
        QVERIFY(!applicationIcon().pixmap(64, 64).isNull());
    }

    void goesRoundInReadingOrder()
    {
        const auto placeOf = [this](const QWidget& widget) {
            return widget.mapTo(&window(), widget.rect().center());
        };
        for (const QWidget* area : { &find("leftBox"), &find("rightBox") }) {
            QList<const QWidget*> stops;
            for (QWidget* next = area->nextInFocusChain(); next != area;
                 next = next->nextInFocusChain())
                if (area->isAncestorOf(next) && (next->focusPolicy() & Qt::TabFocus) != 0
                    && next->isVisible() && next->focusProxy() == nullptr)
                    stops.append(next);
            QVERIFY(stops.size() >= 4);
            for (qsizetype i = 1; i < stops.size(); ++i) {
                const QPoint step = placeOf(*stops.at(i)) - placeOf(*stops.at(i - 1));
                const bool isSameRow = qAbs(step.y()) < 8;
                QVERIFY2(isSameRow ? step.x() > 0 : step.y() > 0,
                         qPrintable(stops.at(i)->objectName()));
            }
        }
        QTest::keyClick(&find("helpHyperlink"), Qt::Key_Return);
        QCOMPARE(desktop().opened.size(), 1);
    }

    void keepsItsWidthWhateverTheNames()
    {
        QDialog& sheet = *controller().processViewPanel();
        sheet.show();
        const int width = sheet.width();
        const auto labels = sheet.findChildren<ElidedLabel*>();
        QVERIFY(labels.size() >= 3);
        for (ElidedLabel* label : labels) {
            label->setText(u"/home/ann/scans/%1/page.tif"_s.arg(QString(300, u'W')));
            sheet.layout()->activate();
            QVERIFY(sheet.width() == width && label->geometry().right() < width);
            QVERIFY(label->shownText().startsWith(u"/home/"_s)
                    && label->shownText().endsWith(u".tif"_s));
        }
    }

    void answersWithTheButtonPressed()
    {
        for (const auto& [key, count, answer] :
             { std::tuple(Qt::Key_Return, 2, 0), std::tuple(Qt::Key_Escape, 2, 1),
               std::tuple(Qt::Key_Escape, 1, 0), std::tuple(Qt::Key_Escape, 3, 2) }) {
            int pressed = -1;
            alerts().ask(&window(), AlertPanel::Style::Critical, u"Title"_s, u"<b>Text</b>?"_s,
                         QStringList { u"Yes"_s, u"No"_s, u"Maybe"_s }.first(count),
                         [&](int button) { pressed = button; });
            auto& box = *window().findChildren<QMessageBox*>().constLast();
            QVERIFY(box.isModal() && pressed == -1); // asking does not wait
            QCOMPARE(box.textFormat(), Qt::PlainText);
            QTest::keyClick(&box, key);
            QCOMPARE(pressed, answer);
        }
    }

    void opensTheFileDialogs()
    {
        QDir(path(u""_s)).mkpath(u"one"_s);
        QDir(path(u""_s)).mkpath(u"two"_s);
        makeFile(path(u"list.txt"_s));
        const QString title = u"Title"_s;
        const QStringList types { u"txt"_s };
        QStringList names;
        const auto done = [&](const QList<QUrl>& urls) {
            names.clear();
            for (const QUrl& url : urls)
                names.append(url.fileName());
            names.sort();
        };
        using Kind = std::tuple<std::function<void()>, QFileDialog::FileMode, QString>;
        for (const auto& [open, mode, chosen] :
             { Kind([&] { chooser().chooseFiles(&window(), title, types, done); },
                    QFileDialog::ExistingFiles, u"list.txt"_s),
               Kind([&] { chooser().chooseFolders(&window(), title, done); },
                    QFileDialog::Directory, u"one two"_s),
               Kind([&] { chooser().chooseFolder(&window(), title, done); }, QFileDialog::Directory,
                    u"one"_s),
               Kind([&] { chooser().chooseTextFile(&window(), title, types, done); },
                    QFileDialog::ExistingFile, u"list.txt"_s),
               Kind(
                   [&] {
                       chooser().chooseSaveFile(&window(), title, u"txt"_s, u"new name"_s, done);
                   },
                   QFileDialog::AnyFile, u"new name.txt"_s) }) {
            open();
            QFileDialog& dialog = *window().findChildren<QFileDialog*>().constLast();
            QCOMPARE(dialog.windowTitle(), title);
            QCOMPARE(dialog.fileMode(), mode);
            QCOMPARE(dialog.acceptMode() == QFileDialog::AcceptSave, mode == QFileDialog::AnyFile);
            QVERIFY(!dialog.testOption(QFileDialog::DontConfirmOverwrite));
            QCOMPARE(dialog.nameFilters().constFirst().contains(u"*.txt"_s),
                     chosen == u"list.txt"_s);
            dialog.setDirectory(path(u""_s));
            if (chosen.contains(u"two"_s)) {
                QVERIFY(dialog.testOption(QFileDialog::DontUseNativeDialog)); // they return one
                auto& list = childOf<QAbstractItemView>(dialog, "listView");
                QTRY_COMPARE(list.model()->rowCount(list.rootIndex()), 3); // and that of the logs
                list.selectAll();
            } else if (mode != QFileDialog::AnyFile) {
                dialog.selectFile(path(chosen));
            }
            static_cast<QDialog&>(dialog).accept(); // as the button; protected in the class itself
            names.removeOne(u"data"_s);
            QCOMPARE(names.join(u' '), chosen);
        }
        chooser().chooseFolder(&window(), title, done);
        window().findChildren<QFileDialog*>().constLast()->reject();
        QCOMPARE(names, QStringList());
    }

    void namesAFileByItsFolders()
    {
        QCOMPARE(
            informationScript(u"/a.tif"_s),
            u"tell application \"Finder\"\nactivate \nopen information window of document file "
            "\"a.tif\" of startup disk\nend tell"_s);
        QVERIFY(
            informationScript(u"/%@/%2 ä/%1.tif"_s)
                .contains(u" file \"%1.tif\" of folder \"%2 ä\" of folder \"%@\" of startup "_s));
        // A name that could become a command is not put into the script.
        QVERIFY(isSafeInScript(u"/Büro 1/it's $(a) `b` %1\n.tif"_s));
        QVERIFY(!isSafeInScript(u"/a\" & (do shell script \"id\") & \".tif"_s));
        QVERIFY(!isSafeInScript(u"/folder\\/a.tif"_s)); // would take the closing quote along
    }
};

QTEST_MAIN(WidgetsTest)
#include "WidgetsTest.moc"
