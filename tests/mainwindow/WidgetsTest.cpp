#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "tests/support/Testing.h"
#include "ui_MainWindow.h"
#include "ui_ProcessPanel.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTabWidget>

namespace {

/// The main window as the program shows it, without a controller.
struct Shell
{
    Shell()
    {
        ui.setupUi(&window);
        applySymbolicIcons(window);
        tabs = window.findChild<QTabWidget*>(u"settingTabView"_s);
        link = window.findChild<QPushButton*>(u"helpHyperlink"_s);
    }

    QMainWindow window;
    Ui::MainWindow ui;
    QTabWidget* tabs; ///< of the settings pane, as the link
    QPushButton* link;
};

const QList<std::pair<const char*, char16_t>> MainWindowKeys {
    { "removeBtn", u'r' },
    { "importBtn", u'i' },
    { "addFilesBtn", u'f' },
    { "addFolderBtn", u'o' },
    { "inculdeSubfoldersBtn", u'u' },
    { "convertBtn", u's' },
    { "setCurrentAsDefaultOutputFolderPathBtn", u'd' },
    { "openFolderAfterConversionBtn", u'p' },
};

bool isReddish(QRgb pixel)
{
    return qRed(pixel) > 150 && qGreen(pixel) < 100 && qBlue(pixel) < 100;
}

/// The columns of `widget` in which something red is drawn.
QList<int> redColumns(QWidget& widget)
{
    const QImage image = widget.grab().toImage();
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (isReddish(image.pixel(x, y))) {
                columns.append(x);
                break;
            }
        }
    }
    return columns;
}

/// The letter after the first single '&' of `text`, upper case; null without one.
QChar mnemonicOf(const QString& text)
{
    const QString sequence = QKeySequence::mnemonic(text).toString();
    return sequence.isEmpty() ? QChar() : sequence.back().toUpper();
}

/// What is wrong with the room that `widget` has; empty when its text shows in full.
QString cutOff(const QWidget& widget)
{
    QSize need = widget.minimumSizeHint();
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    if (label != nullptr && label->wordWrap())
        need.setHeight(label->heightForWidth(widget.width()));
    else if (label != nullptr || qobject_cast<const QAbstractButton*>(&widget) != nullptr)
        need = widget.sizeHint();
    const QRect visible = widget.visibleRegion().boundingRect();
    if (visible.width() >= need.width() && visible.height() >= need.height())
        return {};
    return u"%1 needs %2 x %3, shows %4 x %5"_s.arg(widget.objectName())
        .arg(need.width())
        .arg(need.height())
        .arg(visible.width())
        .arg(visible.height());
}

} // namespace

class WidgetsTest : public QObject
{
    Q_OBJECT

private slots:
    void drawsTheKeyLetterInItsColourAtItsPlace()
    {
        QPushButton button(u"mmmmimmmm"_s);
        button.resize(button.sizeHint() + QSize(40, 0));
        QVERIFY(redColumns(button).isEmpty());
        const int plainWidth = button.sizeHint().width();
        setKeyLetter(&button, u"i"_s, Qt::red);
        QCOMPARE(keyLetterPosition(button), qsizetype(4));
        QCOMPARE(button.text(), u"mmmmimmmm"_s);
        QVERIFY(button.sizeHint().width() > plainWidth);
        const QList<int> columns = redColumns(button);
        QVERIFY(!columns.isEmpty());
        QVERIFY2(qAbs((columns.first() + columns.last()) / 2 - button.width() / 2) <= 2,
                 "the letter in the middle of the title is in the middle of the button");
        QVERIFY(columns.last() - columns.first() < button.fontMetrics().horizontalAdvance(u'm'));
        button.setEnabled(false);
        QVERIFY2(redColumns(button).isEmpty(), "a disabled button is dim all over");
        button.setText(u"mimi"_s);
        QCOMPARE(keyLetterPosition(button), qsizetype(-1));
        QVERIFY(button.shortcut().isEmpty());

        QCheckBox box(u"immmm"_s);
        box.resize(box.sizeHint());
        setKeyLetter(&box, u"I"_s, Qt::red);
        const QList<int> boxColumns = redColumns(box);
        QVERIFY(!boxColumns.isEmpty());
        QVERIFY(boxColumns.last() < box.width() / 2);
    }

    void altAndTheKeyLetterPressTheButton()
    {
#ifdef Q_OS_MACOS
        QSKIP("Alt types characters here");
#endif
        Shell shell;
        setKeyLetter(shell.ui.addFolderBtn, u"o"_s, Qt::black);
        setKeyLetter(shell.ui.inculdeSubfoldersBtn, u"u"_s, Qt::black);
        shell.window.show();
        QVERIFY(QTest::qWaitForWindowActive(&shell.window));
        QSignalSpy pressed(shell.ui.addFolderBtn, &QPushButton::clicked);
        QTest::keyClick(&shell.window, Qt::Key_O, Qt::AltModifier);
        QTRY_COMPARE(pressed.count(), 1);
        QTest::keyClick(&shell.window, Qt::Key_U, Qt::AltModifier);
        QTRY_VERIFY(shell.ui.inculdeSubfoldersBtn->isChecked());
        shell.ui.addFolderBtn->setEnabled(false);
        QTest::keyClick(&shell.window, Qt::Key_O, Qt::AltModifier);
        QCOMPARE(pressed.count(), 1);
    }

    void titlesContainTheirKeyLetters()
    {
        const Shell shell;
        for (const auto& [name, letter] : MainWindowKeys) {
            const auto* const button
                = shell.window.findChild<QAbstractButton*>(QLatin1String(name));
            QVERIFY2(button != nullptr, name);
            QVERIFY2(button->text().contains(QChar(letter), Qt::CaseInsensitive), name);
            QVERIFY2(!button->text().contains(u'&'), name);
        }
        QDialog sheet;
        Ui::ProcessPanel panel;
        panel.setupUi(&sheet);
        QVERIFY(panel.viewLogBtn->text().contains(u'l', Qt::CaseInsensitive));
        QVERIFY(panel.cancelProcessBtn->text().contains(u'c', Qt::CaseInsensitive));
    }

    void noTwoAltKeysCollide()
    {
        // Two owners of one key cancel each other out: neither answers.
        const Shell shell;
        for (int tab = 0; tab < shell.tabs->count(); ++tab) {
            QHash<QChar, QString> owners;
            const auto take = [&](QChar letter, const QObject& owner) {
                if (letter.isNull())
                    return;
                const QString before = owners.value(letter);
                QVERIFY2(before.isEmpty(),
                         qPrintable(u"%1: %2 and %3"_s.arg(letter, before, owner.objectName())));
                owners.insert(letter, owner.objectName());
            };
            const auto isOnThisTab = [&](const QWidget& widget) {
                for (int other = 0; other < shell.tabs->count(); ++other) {
                    if (other != tab && shell.tabs->widget(other)->isAncestorOf(&widget))
                        return false;
                }
                return true;
            };
            const auto menus = shell.ui.menuBar->findChildren<QMenu*>();
            for (const QMenu* menu : menus)
                take(mnemonicOf(menu->title()), *menu);
            const auto widgets = shell.window.findChildren<QWidget*>();
            for (const QWidget* widget : widgets) {
                if (!isOnThisTab(*widget))
                    continue;
                if (const auto* const label = qobject_cast<const QLabel*>(widget))
                    take(label->buddy() != nullptr ? mnemonicOf(label->text()) : QChar(), *label);
                else if (const auto* const button = qobject_cast<const QAbstractButton*>(widget))
                    take(mnemonicOf(button->text()), *button);
            }
            for (const auto& [name, letter] : MainWindowKeys) {
                const auto* const button = shell.window.findChild<QWidget*>(QLatin1String(name));
                if (isOnThisTab(*button))
                    take(QChar(letter).toUpper(), *button);
            }
            QVERIFY(owners.size() > 10);
        }
    }

    void cutsNothingOff_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<int>("tab");
        for (const double scale : { 1.0, 1.5 }) {
            for (int tab = 0; tab < 2; ++tab)
                QTest::addRow("font x %.1f, tab %d", scale, tab) << scale << tab;
        }
    }

    void cutsNothingOff()
    {
        QFETCH(const double, scale);
        QFETCH(const int, tab);
        const QFont before = QApplication::font();
        QFont font = before;
        font.setPointSizeF(before.pointSizeF() * scale);
        QApplication::setFont(font);
        {
            Shell shell;
            for (const auto& [name, letter] : MainWindowKeys) {
                auto* const button = shell.window.findChild<QAbstractButton*>(QLatin1String(name));
                setKeyLetter(button, QString(QChar(letter)), Qt::black);
            }
            shell.tabs->setCurrentIndex(tab);
            shell.window.resize(shell.window.minimumSizeHint());
            shell.window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&shell.window));
            shell.window.resize(shell.window.minimumSizeHint());
            int checked = 0;
            const auto widgets = shell.window.centralWidget()->findChildren<QWidget*>();
            for (const QWidget* widget : widgets) {
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
        QApplication::setFont(before);
    }

    void iconButtonsHaveNames()
    {
        const Shell shell;
        int checked = 0;
        const auto buttons = shell.ui.leftBox->findChildren<QToolButton*>();
        for (const QToolButton* button : buttons) {
            QVERIFY2(!button->icon().isNull(), qPrintable(button->objectName()));
            QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
            QVERIFY2(!button->toolTip().isEmpty(), qPrintable(button->objectName()));
            ++checked;
        }
        QCOMPARE(checked, 13);
        const auto actions = shell.window.findChildren<QAction*>();
        for (const QAction* action : actions) {
            if (action->property("symbolicIcon").isValid())
                QVERIFY2(!action->icon().isNull(), qPrintable(action->objectName()));
        }
    }

    void tabOrderIsReadingOrder()
    {
        Shell shell;
        shell.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&shell.window));
        const QWidget* const window = &shell.window;
        const auto takesTab = [&](const QWidget* widget) {
            return (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isVisible()
                && widget->focusProxy() == nullptr;
        };
        for (const QWidget* area :
             std::initializer_list<const QWidget*> { shell.ui.leftBox, shell.ui.rightBox }) {
            const QWidget* before = nullptr;
            int steps = 0;
            for (QWidget* next = area->nextInFocusChain(); next != area;
                 next = next->nextInFocusChain()) {
                if (!area->isAncestorOf(next) || !takesTab(next))
                    continue;
                const QPoint place = next->mapTo(window, next->rect().center());
                if (before != nullptr) {
                    const QPoint last = before->mapTo(window, before->rect().center());
                    const bool isSameRow = qAbs(place.y() - last.y()) < 8;
                    QVERIFY2(isSameRow ? place.x() > last.x() : place.y() > last.y() - 8,
                             qPrintable(before->objectName() + u" -> "_s + next->objectName()));
                }
                before = next;
                ++steps;
            }
            QVERIFY(steps >= 4);
        }
    }

    void iconsFollowPaletteAndState()
    {
        const auto inkOf = [](const QIcon& icon, QIcon::Mode mode) {
            const QImage image = icon.pixmap(QSize(24, 24), 2.0, mode).toImage();
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (qAlpha(image.pixel(x, y)) == 255)
                        return QColor(image.pixel(x, y));
                }
            }
            return QColor();
        };
        const QIcon icon = symbolicIcon(u"remove-all"_s);
        QCOMPARE(icon.pixmap(QSize(24, 24), 2.0).size(), QSize(48, 48));
        const QPalette before = QApplication::palette();
        QPalette palette = before;
        palette.setColor(QPalette::WindowText, QColor(10, 200, 30));
        palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(90, 100, 110));
        QApplication::setPalette(palette);
        QCOMPARE(inkOf(icon, QIcon::Normal), QColor(10, 200, 30));
        QCOMPARE(inkOf(icon, QIcon::Disabled), QColor(90, 100, 110));
        QApplication::setPalette(before);
        QVERIFY(symbolicIcon(u"no-such-icon"_s).isNull());
        QVERIFY(!applicationIcon().pixmap(64, 64).isNull());
    }

    void elidesInTheMiddle()
    {
        ElidedLabel label;
        const int hintWidth = label.sizeHint().width();
        const QString path = u"/home/ann/scans/%1/page.tif"_s.arg(QString(300, u'x'));
        label.setText(path);
        QCOMPARE(label.sizeHint().width(), hintWidth);
        label.resize(250, label.sizeHint().height());
        QVERIFY(label.shownText().startsWith(u"/home/"_s) && label.shownText().endsWith(u".tif"_s));
        QVERIFY(label.fontMetrics().horizontalAdvance(label.shownText()) <= 250);
        QCOMPARE(label.text(), path);
        label.setText(u"a.tif"_s);
        QCOMPARE(label.shownText(), u"a.tif"_s);
    }

    void progressSheetKeepsItsWidth()
    {
        QDialog sheet;
        Ui::ProcessPanel panel;
        panel.setupUi(&sheet);
        QCOMPARE(sheet.objectName(), u"processViewPanel"_s);
        sheet.show();
        QVERIFY(QTest::qWaitForWindowExposed(&sheet));
        const int width = sheet.width();
        for (const int length : { 5, 400, 30 }) {
            const QString name(length, u'W');
            panel.processFileLabel->setText(name);
            panel.processOutputLabel->setText(name);
            panel.processCountLabel->setText(name);
            sheet.layout()->activate();
            QCOMPARE(sheet.width(), width);
            QVERIFY(panel.processFileLabel->geometry().right() < width);
        }
    }

    void linkIsPressedByReturn()
    {
        Shell shell;
        QSignalSpy asked(shell.link, &QAbstractButton::clicked);
        QTest::keyClick(shell.link, Qt::Key_Return);
        QTest::mouseClick(shell.link, Qt::LeftButton);
        QCOMPARE(asked.count(), 2);
    }

    void alertAnswersWithTheButtonPressed_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<int>("answer");
        QTest::newRow("Return is the first")
            << Qt::Key_Return << QStringList { u"Yes"_s, u"No"_s } << 0;
        QTest::newRow("Escape is the last")
            << Qt::Key_Escape << QStringList { u"Yes"_s, u"No"_s } << 1;
        QTest::newRow("Escape with one") << Qt::Key_Escape << QStringList { u"OK"_s } << 0;
        QTest::newRow("Escape with three")
            << Qt::Key_Escape << QStringList { u"Yes"_s, u"Maybe"_s, u"No"_s } << 2;
    }

    void alertAnswersWithTheButtonPressed()
    {
        QFETCH(const Qt::Key, key);
        QFETCH(const QStringList, buttons);
        QWidget window;
        window.show();
        AlertPanel alerts;
        QList<int> answers;
        alerts.ask(&window, AlertPanel::Style::Critical, u"Title"_s, u"<b>Text</b>?"_s, buttons,
                   [&](int button) { answers.append(button); });
        auto* const box = window.findChild<QMessageBox*>();
        QVERIFY(box != nullptr);
        QVERIFY(box->isModal());
        QVERIFY2(answers.isEmpty(), "asking does not wait");
        QCOMPARE(box->text(), u"<b>Text</b>?"_s);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QVERIFY(QTest::qWaitForWindowExposed(box));
        QTest::keyClick(box, key);
        QFETCH(const int, answer);
        QCOMPARE(answers, QList<int> { answer });
    }

    void alertTakesAnswersBeforehand()
    {
        QWidget window;
        AlertPanel alerts;
        alerts.setNextAnswer(1);
        alerts.setNextAnswer(0);
        QList<int> answers;
        for (int i = 0; i < 2; ++i) {
            alerts.ask(&window, AlertPanel::Style::Informational, u"Title"_s, u"Text %1"_s.arg(i),
                       { u"Yes"_s, u"No"_s }, [&](int button) { answers.append(button); });
        }
        QCOMPARE(answers, QList<int>({ 1, 0 }));
        QCOMPARE(alerts.askedCount(), 2);
        QCOMPARE(alerts.lastText(), u"Text 1"_s);
        QVERIFY(window.findChild<QMessageBox*>() == nullptr);
    }

    void chooserReturnsWhatWasChosen()
    {
        const QTemporaryDir folder;
        QDir(folder.path()).mkdir(u"one"_s);
        QDir(folder.path()).mkdir(u"two"_s);
        QWidget window;
        window.show();
        FileChooser chooser;
        QList<QList<QUrl>> chosen;
        const auto done = [&](const QList<QUrl>& urls) { chosen.append(urls); };
        chooser.chooseFolders(&window, u"Choose folders"_s, done);
        auto* const dialog = window.findChild<QFileDialog*>();
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->windowTitle(), u"Choose folders"_s);
        QVERIFY(dialog->testOption(QFileDialog::DontUseNativeDialog)); // which return one folder
        dialog->setDirectory(folder.path());
        auto* const list = dialog->findChild<QAbstractItemView*>(u"listView"_s);
        QVERIFY(list != nullptr);
        QTRY_COMPARE(list->model()->rowCount(list->rootIndex()), 2);
        list->selectAll();
        static_cast<QDialog*>(dialog)
            ->accept(); // what the button does; protected in the class itself
        QCOMPARE(chosen.size(), 1);
        QStringList names;
        for (const QUrl& url : chosen.constFirst())
            names.append(url.fileName());
        names.sort();
        QCOMPARE(names, QStringList({ u"one"_s, u"two"_s }));
    }

    void chooserReturnsNothingWhenCancelled()
    {
        QWidget window;
        window.show();
        FileChooser chooser;
        int calls = 0;
        QList<QUrl> last { QUrl(u"file:///x"_s) };
        const auto done = [&](const QList<QUrl>& urls) {
            ++calls;
            last = urls;
        };
        chooser.chooseFiles(&window, u"Choose"_s, { u"tif"_s, u"tiff"_s }, done);
        auto* const dialog = window.findChild<QFileDialog*>();
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->fileMode(), QFileDialog::ExistingFiles);
        QVERIFY(dialog->nameFilters().constFirst().contains(u"*.tiff"_s));
        dialog->reject();
        QCOMPARE(calls, 1);
        QVERIFY(last.isEmpty());

        const QList<QUrl> answer { QUrl::fromLocalFile(u"/tmp/a folder"_s) };
        chooser.setNextChoice(answer);
        chooser.chooseFolder(&window, u"Select Output Folder:"_s, done);
        QCOMPARE(last, answer);
        QCOMPARE(chooser.lastMessage(), u"Select Output Folder:"_s);
    }
};

QTEST_MAIN(WidgetsTest)
#include "WidgetsTest.moc"
