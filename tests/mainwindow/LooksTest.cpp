#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/ReadingOrder.h"
#include "mainwindow/widgets/Theme.h"
#include "tests/mainwindow/Session.h"

#include <QAccessible>
#include <QComboBox>
#include <QHelpEvent>
#include <QMenuBar>
#include <QProgressBar>
#include <QScreen>
#include <QToolBar>
#include <QTreeWidget>

#include <cmath>

namespace {

double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other)
{
    const auto [low, high] = std::minmax({ luminance(one), luminance(other) });
    return (high + 0.05) / (low + 0.05);
}

/// A half-transparent colour as it looks on `ground`.
QColor shown(const QColor& color, const QColor& ground)
{
    const auto mix = [&](double top, double bottom) {
        return static_cast<float>(top * color.alphaF() + bottom * (1 - color.alphaF()));
    };
    return QColor::fromRgbF(mix(color.redF(), ground.redF()), mix(color.greenF(), ground.greenF()),
                            mix(color.blueF(), ground.blueF()));
}

} // namespace

/// What the window looks like, and what it is for those who do not see it or have no mouse.
class LooksTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }
    void cleanup() { showTheme(Theme::System); }

    void canBeRead_data()
    {
        QTest::addColumn<QPalette>("palette");
        QTest::newRow("light") << paletteOf(Theme::Light);
        QTest::newRow("dark") << paletteOf(Theme::Dark);
    }

    void canBeRead()
    {
        QFETCH(const QPalette, palette);
        using P = QPalette;
        const std::pair<P::ColorRole, P::ColorRole> pairs[]
            = { { P::WindowText, P::Window },
                { P::Text, P::Base },
                { P::Text, P::AlternateBase },
                { P::ButtonText, P::Button },
                { P::WindowText, P::Base },
                { P::HighlightedText, P::Highlight },
                { P::PlaceholderText, P::Base },
                { P::Link, P::Window },
                { P::Link, P::Base },
                { P::ToolTipText, P::ToolTipBase } };
        for (const auto group : { P::Active, P::Inactive, P::Disabled })
            for (const auto& [text, ground] : pairs) {
                const QColor below = palette.color(group, ground);
                const double found = contrast(shown(palette.color(group, text), below), below);
                const double least = group == P::Disabled ? 2.5 : 4.5;
                const QString what = u"%1 on %2 (%3): %4"_s.arg(int(text))
                                         .arg(int(ground))
                                         .arg(int(group))
                                         .arg(found);
                QVERIFY2(found >= least, qPrintable(what));
            }
        QVERIFY(contrast(palette.color(P::Disabled, P::WindowText), palette.color(P::Window))
                < contrast(palette.color(P::Active, P::WindowText), palette.color(P::Window)));
    }

    /// Black totals, links and icons on dark.
    void changesItsColoursWhileItRuns()
    {
        QVERIFY(fill());
        QCOMPARE(find("helpHyperlink").palette().color(QPalette::ButtonText),
                 window().palette().color(QPalette::Link));
        for (const auto& [action, theme] : { std::pair("darkThemeAction", Theme::Dark),
                                             std::pair("lightThemeAction", Theme::Light) }) {
            press(action);
            QCoreApplication::sendPostedEvents();
            const QPalette colours = paletteOf(theme);
            const QColor text = colours.color(QPalette::WindowText);
            for (const char* name : { "labelTotalFiles", "labelTimeTaken", "planLabel",
                                      "lableDragAndDrop", "outputExampleLabel" })
                QCOMPARE(find(name).palette().color(QPalette::WindowText), text);
            QCOMPARE(find("helpHyperlink").palette().color(QPalette::ButtonText),
                     colours.color(QPalette::Link));
            const QIcon icon = find<QAbstractButton>("removeBtn").icon();
            const auto colourOf = [&](QIcon::Mode mode) {
                return icon.pixmap(QSize(24, 24), 1, mode).toImage().pixelColor(12, 12).green() / 4;
            };
            QCOMPARE(colourOf(QIcon::Normal), text.green() / 4);
            QCOMPARE(colourOf(QIcon::Disabled),
                     colours.color(QPalette::Disabled, QPalette::WindowText).green() / 4);
        }
        press("systemThemeAction");
        QVERIFY(find<QAction>("systemThemeAction").isChecked());
        window().close();
        showTheme(Theme::System);
        start();
        QVERIFY(find<QAction>("systemThemeAction").isChecked());
        QVERIFY(!find<QAction>("lightThemeAction").isChecked());
        press("darkThemeAction");
        window().close();
        showTheme(Theme::System);
        start();
        QVERIFY(find<QAction>("darkThemeAction").isChecked());
        QTRY_COMPARE(window().palette().color(QPalette::Window),
                     paletteOf(Theme::Dark).color(QPalette::Window));
    }

    void saysWhatItsButtonsDo_data()
    {
        addTextRows(R"(
            addFilesBtn       | Add Files (Ctrl+O)         |                                |
            removeBtn         | Remove (Del)               | The list is empty.             |
            moveUpButton      | Move Up (Ctrl+Up)          | The list is empty.             | The first row is among
            moveDownButton    | Move Down (Ctrl+Down)      | The list is empty.             |
            openFileButton    | Open File                  | The list is empty.             |
            convertBtn        | Convert Files (Ctrl+Return) | The list is empty.            | 15 image(s) beside their
            recentFoldersBtn  | Recent                     |                                |
            inculdeSubfoldersBtn | Include sub-folders (Alt+U) |                            |)");
    }

    void saysWhatItsButtonsDo()
    {
        const auto [name, beginning, empty, first] = textRow<4>();
        QWidget& button = find(qPrintable(name));
        const auto lines = [&] {
            QHelpEvent asked(QEvent::ToolTip, {}, {});
            QCoreApplication::sendEvent(&button, &asked);
            return button.toolTip().split(u'\n');
        };
        QCOMPARE(lines().first(), beginning);
        QCOMPARE(lines().value(2), empty);
        QVERIFY(fill());
        table().highlightRows({ 0 });
        QTRY_COMPARE(lines().value(2).left(first.size()), first);
        QCOMPARE(lines().size() > 2, !first.isEmpty());
    }

    /// Of two commands with one letter neither is reached at once.
    void givesEachLetterOfAMenuToOneCommand()
    {
#ifdef Q_OS_MACOS
        QSKIP("menus have no letters here");
#endif
        QVERIFY(fill());
        int count = 0;
        for (const QMenu* menu : window().findChildren<QMenu*>()) {
            QStringList letters;
            for (const QAction* action : menu->actions()) {
                const QString letter = QKeySequence::mnemonic(action->text()).toString();
                if (letter.isEmpty() || !action->isVisible())
                    continue;
                QVERIFY2(!letters.contains(letter),
                         qPrintable(menu->objectName() + u": "_s + action->text()));
                letters.append(letter);
                ++count;
            }
        }
        QVERIFY2(count > 30, qPrintable(QString::number(count)));
    }

    void showsThePreferences()
    {
        press("toggleSettingsAction");
        find<QTabWidget>("settingTabView").setCurrentIndex(1);
        for (int i = 0; i < 2; ++i) {
            press("preferencesAction");
            QVERIFY(find("rightBox").isVisible());
            QCOMPARE(window().focusWidget(), &find("outputType"));
        }
    }

    /// What is set up once and missed only by those who meet it.
    void isSetUp_data()
    {
        addTextRows(R"(
            mainToolBar       | movable           | 0
            mainToolBar       | contextMenuPolicy | 4
            MainWindow        | contextMenuPolicy | 0
            additionLabel     | visible           | 0
            filterBar         | visible           | 0
            filterAllButton   | visible           | 0
            loadingIndicator  | visible           | 0
            formatNote        | visible           | 0
            jpegBox           | visible           | 1
            tiffBox           | visible           | 0
            pages-fault       | visible           | 0
            expect-dpi-fault  | wordWrap          | 1
            expect-dpi-fault  | textFormat        | 0
            outputType        | currentIndex      | 0
            expect-dpi        | clearButtonEnabled | 1
            recentFoldersBtn  | enabled           | 0
            settingTabView    | currentIndex      | 0)");
    }

    void isSetUp()
    {
        const auto [name, property, value] = textRow<3>();
        const QWidget& part = name == u"MainWindow" ? window() : find(qPrintable(name));
        QCOMPARE(part.property(qPrintable(property)).toInt(), value.toInt());
        for (const char* action : { "exportToolbarItem", "preferencesToolbarItem" })
            QCOMPARE(find<QToolBar>("mainToolBar")
                         .widgetForAction(&find<QAction>(action))
                         ->focusPolicy(),
                     Qt::TabFocus);
        const auto& more = find<QAbstractButton>("qt_toolbar_ext_button");
        QVERIFY(more.accessibleName() == u"More"_s && !more.icon().isNull());
        QVERIFY(find<QAction>("invertSelectionAction")
                    .text()
                    .endsWith(QKeySequence(Qt::Key_Space).toString(QKeySequence::NativeText)));
        QVERIFY(find("loadingIndicator").sizePolicy().retainSizeWhenHidden());
        QCOMPARE(window().focusWidget(), &table());
    }

    /// Controls drawn over rows, or a window that is larger than the screen.
    void fitsSmallScreens_data()
    {
        addTextRows(R"(
            large font   | 1.5 | pane
            usual        | 1   | pane
            usual        | 1   |)");
    }

    void fitsSmallScreens()
    {
        const auto [name, factor, pane] = textRow<3>();
        QFont font = QApplication::font();
        const QFont usual = font;
        font.setPointSizeF(font.pointSizeF() * factor.toDouble());
        QApplication::setFont(font);
        const auto atEnd = qScopeGuard([&] { QApplication::setFont(usual); });
        start();
        QVERIFY(fill());
        if (pane.isEmpty())
            press("toggleSettingsAction");
        QCoreApplication::sendPostedEvents();
        window().resize(100, 100);
        QCoreApplication::sendPostedEvents();
        const QSize least = factor == u"1"_s ? QSize(667, 336) : QSize(960, 540);
        QVERIFY2(window().width() <= least.width() && window().height() <= least.height(),
                 qPrintable(u"%1 x %2"_s.arg(window().width()).arg(window().height())));
        const char* const parts[]
            = { "buttonBar",           "mainTableView",  "labelTotalFiles", "planLabel",
                "labelTotalTIFFPages", "labelTimeTaken", "cancelBtn",       "convertBtn" };
        for (const char* one : parts)
            for (const char* other : parts) {
                const auto place = [this](const char* part) {
                    const QWidget& widget = find(part);
                    return QRect(widget.mapTo(&window(), QPoint()), widget.size());
                };
                QVERIFY2(one == other || !place(one).intersects(place(other)), one);
                QVERIFY2(window().rect().contains(place(one)), one);
            }
    }

    /// A click beside the sheet that leaves the keys with a window that takes none.
    void keepsTheKeysInTheSheet()
    {
        ProcessPanel& sheet = *controller().processViewPanel();
        sheet.show();
        QTRY_COMPARE(QApplication::activeWindow(), &sheet);
        QSignalSpy changes(qGuiApp, &QGuiApplication::focusWindowChanged);
        window().activateWindow();
        QTRY_COMPARE(changes.size(), 2); // there and back
        QTRY_COMPARE(QApplication::activeWindow(), &sheet);
    }

    /// Controls that a screen reader meets without a name.
    void namesAllControls()
    {
        QVERIFY(fill());
        press("searchBtn");
        controller().processViewPanel()->show();
        controller().openImportFilesPanel();
        int named = 0;
        QStringList nameless;
        QList<QWidget*> all = window().findChildren<QWidget*>();
        all.append(&window());
        for (QWidget* top : all)
            if (top->isWindow() && top->isVisible())
                countNames(QAccessible::queryAccessibleInterface(top), named, nameless);
        QVERIFY2(nameless.isEmpty(), qPrintable(nameless.join(u' ')));
        QVERIFY2(named > 45, qPrintable(QString::number(named)));
        qInfo("%d controls have names", named);
    }

    /// All sides at once on a screen that has no room for them.
    void showsNoMoreSidesThanTheScreenHasRoomFor()
    {
        QVERIFY(window().screen()->availableSize().width() < 900);
        const auto isShown = [this](const char* side) { return find(side).isVisible(); };
        for (int i = 0; i < 2; ++i) {
            if (!isShown("previewBox"))
                press("togglePreviewAction");
            QVERIFY(isShown("previewBox") && !isShown("rightBox"));
            QVERIFY(window().width() <= window().screen()->availableSize().width());
            press("toggleSettingsAction");
            QVERIFY(!isShown("previewBox") && isShown("rightBox"));
        }
    }

    /// Controls that Tab does not come to, or comes to out of turn.
    void goesThroughTheWindowAsItIsRead()
    {
        QVERIFY(fill());
        table().highlightRows({ 2 });
        find("addFilesBtn").setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&window()));
        QStringList expected;
        for (const QWidget* control : controlsAsRead(window()))
            if (control->isVisible() && control->isEnabled())
                expected.append(
                    (control->focusProxy() ? control->focusProxy() : control)->objectName());
        for (const auto* button : window().findChildren<QAbstractButton*>())
            if (button->isVisible() && button->isEnabled() && !button->objectName().isEmpty()
                && !button->objectName().startsWith(u"qt_"_s))
                QVERIFY2(expected.contains(button->objectName()), qPrintable(button->objectName()));
        QStringList reached;
        for (qsizetype i = 0; i < expected.size(); ++i) {
            reached.append(window().focusWidget()->objectName());
            QTest::keyClick(window().focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(reached, expected);
        QCOMPARE(window().focusWidget(), &find("addFilesBtn"));
        QVERIFY(expected.size() > 25 && expected.indexOf(u"mainTableView"_s) > 5);
    }

private:
    void countNames(QAccessibleInterface* control, int& named, QStringList& nameless) const
    {
        if (control == nullptr || control->state().invisible
            || control->role() == QAccessible::Cell)
            return;
        const QString name = control->text(QAccessible::Name);
        if (!control->state().focusable || control->role() == QAccessible::Window
            || control->role() == QAccessible::StaticText) {
            // what it consists of
        } else if (!name.isEmpty() && !name.contains(u'<')) {
            ++named;
        } else {
            nameless.append(control->object()->objectName() + u'/'
                            + QLatin1StringView(control->object()->metaObject()->className()));
        }
        if (control->role() != QAccessible::Table && control->role() != QAccessible::ComboBox)
            for (int i = 0; i < control->childCount(); ++i)
                countNames(control->child(i), named, nameless);
    }
};

QTEST_MAIN(LooksTest)
#include "LooksTest.moc"
