#include "mainwindow/desktop/InformationScript.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/ElidedLabel.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaEnum>
#include <QTabWidget>
#include <QToolButton>

namespace {

/// The letter after the first single '&' of `text`, upper case; empty without one.
QString mnemonicOf(const QString& text) { return QKeySequence::mnemonic(text).toString(); }

/// What is wrong with the room that `widget` has; empty when its text shows in full.
QString cutOff(const QWidget& widget)
{
    QSize need = widget.minimumSizeHint();
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    if (label != nullptr && label->wordWrap())
        need.setHeight(label->heightForWidth(widget.width()));
    else if (label != nullptr || qobject_cast<const QAbstractButton*>(&widget) != nullptr)
        need = widget.sizeHint();
    const QSize visible = widget.visibleRegion().boundingRect().size();
    if (visible.width() >= need.width() && visible.height() >= need.height())
        return {};
    return u"%1 needs %2 x %3, shows %4 x %5"_s.arg(widget.objectName())
        .arg(need.width())
        .arg(need.height())
        .arg(visible.width())
        .arg(visible.height());
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
    void cleanup() { end(); }

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
                const bool showsText = qobject_cast<const QLabel*>(widget) != nullptr
                    || qobject_cast<const QAbstractButton*>(widget) != nullptr
                    || qobject_cast<const QComboBox*>(widget) != nullptr
                    || qobject_cast<const QLineEdit*>(widget) != nullptr;
                if (!showsText || !widget->isVisible() || widget->objectName().startsWith(u"qt_"_s)
                    || widget->objectName().isEmpty() || qobject_cast<QLineEdit*>(widget->parent()))
                    continue;
                ++checked;
                QTRY_COMPARE(cutOff(*widget), QString());
            }
            QVERIFY(checked > 20);
        }
    }

    void keepsItsButtonsApart()
    {
        auto& bar = find("buttonBar");
        for (const int width : { 0, 1200, 2000 }) {
            window().resize(width, 700);
            QTRY_COMPARE(window().width() > 1100, width > 0);
            QCoreApplication::processEvents();
            const auto buttons = bar.findChildren<QAbstractButton*>(Qt::FindDirectChildrenOnly);
            QVERIFY(buttons.size() > 4);
            for (const QAbstractButton* button : buttons) {
                QVERIFY2(bar.rect().contains(button->geometry()), qPrintable(button->objectName()));
                for (const QAbstractButton* other : buttons)
                    QVERIFY(other == button || !other->geometry().intersects(button->geometry()));
            }
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
        // Black ink on a dark theme, or disabled ink on what is enabled, is no icon either.
        const auto inkOf = [](QIcon::Mode mode) {
            const QImage image
                = symbolicIcon(u"remove-all"_s).pixmap(QSize(24, 24), 1.0, mode).toImage();
            for (int at = 0; at < image.width() * image.height(); ++at)
                if (const QColor ink = image.pixelColor(at % image.width(), at / image.width());
                    ink.alpha() == 255)
                    return ink;
            return QColor();
        };
        const QPalette before = QApplication::palette();
        QPalette palette = before;
        palette.setColor(QPalette::WindowText, QColor(10, 200, 30));
        palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(90, 100, 110));
        QApplication::setPalette(palette);
        QCOMPARE(inkOf(QIcon::Normal), QColor(10, 200, 30));
        QCOMPARE(inkOf(QIcon::Disabled), QColor(90, 100, 110));
        QApplication::setPalette(before);
        QVERIFY(!applicationIcon().pixmap(64, 64).isNull());
    }

    void goesRoundInReadingOrder()
    {
        for (const QWidget* area : { &find("leftBox"), &find("rightBox") }) {
            const QWidget* before = nullptr;
            int steps = 0;
            for (QWidget* next = area->nextInFocusChain(); next != area;
                 next = next->nextInFocusChain()) {
                if (!area->isAncestorOf(next) || (next->focusPolicy() & Qt::TabFocus) == 0
                    || !next->isVisible() || next->focusProxy() != nullptr)
                    continue;
                const QPoint place = next->mapTo(&window(), next->rect().center());
                if (before != nullptr) {
                    const QPoint last = before->mapTo(&window(), before->rect().center());
                    const bool isSameRow = qAbs(place.y() - last.y()) < 8;
                    QVERIFY2(isSameRow ? place.x() > last.x() : place.y() > last.y() - 8,
                             qPrintable(before->objectName() + u" -> "_s + next->objectName()));
                }
                before = next;
                ++steps;
            }
            QVERIFY(steps >= 4);
        }
        QTest::keyClick(&find("helpHyperlink"), Qt::Key_Return);
        QCOMPARE(desktop().opened.size(), 1);
    }

    void keepsItsWidthWhateverTheNames()
    {
        QDialog& sheet = *controller().processViewPanel();
        sheet.show();
        const int width = sheet.width();
        const QString path = u"/home/ann/scans/%1/page.tif"_s.arg(QString(300, u'W'));
        for (const char* name : { "processFileLabel", "processOutputLabel", "processCountLabel" }) {
            auto& label = find<ElidedLabel>(name);
            label.setText(path);
            sheet.layout()->activate();
            QCOMPARE(sheet.width(), width);
            QVERIFY(label.geometry().right() < width);
            QVERIFY(label.shownText().startsWith(u"/home/"_s)
                    && label.shownText().endsWith(u".tif"_s));
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
            QVERIFY(box.isModal());
            QCOMPARE(pressed, -1); // asking does not wait
            QCOMPARE(box.text(), u"<b>Text</b>?"_s);
            QCOMPARE(box.textFormat(), Qt::PlainText);
            QTest::keyClick(&box, key);
            QCOMPARE(pressed, answer);
        }
    }

    void opensTheFileDialogs_data()
    {
        addTextRows({ "kind", "mode", "chosen" }, R"(
            files   | ExistingFiles | list.txt
            folders | Directory     | one two
            folder  | Directory     | one
            text    | ExistingFile  | list.txt
            save    | AnyFile       | new name.txt)");
    }

    void opensTheFileDialogs()
    {
        QFETCH(const QString, kind);
        QFETCH(const QString, chosen);
        QDir(path(u""_s)).mkpath(u"one"_s);
        QDir(path(u""_s)).mkpath(u"two"_s);
        makeFile(path(u"list.txt"_s));
        QList<QStringList> results;
        const auto done = [&](const QList<QUrl>& urls) {
            QStringList names;
            for (const QUrl& url : urls)
                names.append(url.fileName());
            names.sort();
            results.append(names);
        };
        for (const bool isAccepted : { false, true }) {
            if (kind == u"files"_s)
                chooser().chooseFiles(&window(), u"Title"_s, { u"txt"_s }, done);
            else if (kind == u"folders"_s)
                chooser().chooseFolders(&window(), u"Title"_s, done);
            else if (kind == u"folder"_s)
                chooser().chooseFolder(&window(), u"Title"_s, done);
            else if (kind == u"text"_s)
                chooser().chooseTextFile(&window(), u"Title"_s, { u"txt"_s }, done);
            else
                chooser().chooseSaveFile(&window(), u"Title"_s, u"txt"_s, u"new name"_s, done);
            const auto dialogs = window().findChildren<QFileDialog*>();
            QFileDialog& dialog = *dialogs.constLast();
            QCOMPARE(dialog.windowTitle(), u"Title"_s);
            const auto modes = QMetaEnum::fromType<QFileDialog::FileMode>();
            QTEST(QString::fromLatin1(modes.valueToKey(dialog.fileMode())), "mode");
            QCOMPARE(dialog.acceptMode() == QFileDialog::AcceptSave, kind == u"save"_s);
            QVERIFY(!dialog.testOption(QFileDialog::DontConfirmOverwrite));
            if (kind == u"files"_s || kind == u"text"_s)
                QVERIFY(dialog.nameFilters().constFirst().contains(u"*.txt"_s));
            if (!isAccepted) {
                dialog.reject();
                continue;
            }
            dialog.setDirectory(path(u""_s));
            if (kind == u"folders"_s) {
                QVERIFY(dialog.testOption(QFileDialog::DontUseNativeDialog)); // they return one
                auto& list = childOf<QAbstractItemView>(dialog, "listView");
                QTRY_COMPARE(list.model()->rowCount(list.rootIndex()), 3); // and that of the logs
                list.selectAll();
            } else {
                dialog.selectFile(kind == u"save"_s ? u"new name"_s : path(chosen));
            }
            static_cast<QDialog&>(dialog).accept(); // as the button; protected in the class itself
        }
        QCOMPARE(results.size(), 2);
        QVERIFY(results.first().isEmpty());
        QCOMPARE(results.last().filter(QRegularExpression(u"^[^d]"_s)).join(u' '), chosen);
    }

    void namesAFileByItsFolders()
    {
        for (const auto& [path, file] :
             { std::pair(u"/a.tif"_s, u"\"a.tif\""_s),
               std::pair(u"/Büro 1/b/ä b.tif"_s,
                         u"\"ä b.tif\" of folder \"b\" of folder \"Büro 1\""_s),
               std::pair(u"/%@/%2/%1.tif"_s, u"\"%1.tif\" of folder \"%2\" of folder \"%@\""_s) })
            QCOMPARE(informationScript(path),
                     u"tell application \"Finder\"\nactivate \nopen information window of document "
                     "file "_s
                         + file + u" of startup disk\nend tell"_s);
        // A name that could become a command is not put into the script.
        QVERIFY(isSafeInScript(u"/Büro 1/it's $(a) `b` %1\n.tif"_s));
        QVERIFY(!isSafeInScript(u"/a\" & (do shell script \"id\") & \".tif"_s));
        QVERIFY(!isSafeInScript(u"/folder\\/a.tif"_s)); // would take the closing quote along
    }
};

QTEST_MAIN(WidgetsTest)
#include "WidgetsTest.moc"
