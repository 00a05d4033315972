#include "mainwindow/widgets/CommandBar.h"
#include "mainwindow/widgets/DropHint.h"
#include "mainwindow/widgets/ElidedLabel.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "mainwindow/widgets/OutlinedStyle.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "mainwindow/widgets/TallPage.h"
#include "mainwindow/widgets/Theme.h"
#include "tests/mainwindow/Session.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolButton>
#include <QToolTip>

namespace {

/// How many of the pixels have `color`.
int pixelsOf(const QImage& image, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y).rgb() == color.rgb() ? 1 : 0;
    return count;
}

QImage grabOf(QWidget& widget)
{
    widget.ensurePolished();
    widget.resize(widget.sizeHint());
    return widget.grab().toImage();
}

class WidgetsTest : public QObject
{
    Q_OBJECT

private slots:
    /// Boxes that nobody sees on dark, and ones drawn twice or full where the style is good enough.
    void outlinesIndicatorsOnDark()
    {
        const OutlinedStyle outlined(u"fusion"_s);
        const std::unique_ptr<QStyle> plain(QStyleFactory::create(u"fusion"_s));
        const auto added = [&](QStyle::PrimitiveElement element, Theme theme, bool isEnabled) {
            QStyleOptionViewItem item;
            QStyleOptionButton button;
            const bool isItem = element == QStyle::PE_IndicatorItemViewItemCheck;
            QStyleOption& option = isItem ? static_cast<QStyleOption&>(item) : button;
            option.rect = { 2, 2, 16, 16 };
            option.palette = paletteOf(theme);
            option.state = isEnabled ? QStyle::State_Enabled : QStyle::State_None;
            QImage images[2]
                = { { 20, 20, QImage::Format_RGB32 }, { 20, 20, QImage::Format_RGB32 } };
            for (int i = 0; i < 2; ++i) {
                images[i].fill(Qt::green);
                QPainter painter(&images[i]);
                painter.setBrush(Qt::red);
                const QPen pen = painter.pen();
                (i == 0 ? *plain : static_cast<const QStyle&>(outlined))
                    .drawPrimitive(element, &option, &painter);
                if (painter.pen() != pen)
                    return u"leaves its pen"_s;
            }
            const QColor expected = isEnabled
                ? option.palette.color(QPalette::Disabled, QPalette::WindowText)
                : option.palette.color(QPalette::Mid);
            QString found;
            if (pixelsOf(images[1], expected) > pixelsOf(images[0], expected))
                found += u"outlined "_s;
            if (images[0].pixel(2, 2) != images[1].pixel(2, 2))
                found += u"square "_s;
            int between = 0;
            for (int i = 0; i < 400; ++i)
                if (const QPoint at(i % 20, i / 20); images[0].pixel(at) != images[1].pixel(at)
                    && images[1].pixel(at) != expected.rgb())
                    ++between;
            return found + (between > 0 ? u"smooth"_s : QString());
        };
        for (const bool isEnabled : { true, false }) {
            for (const auto element :
                 { QStyle::PE_IndicatorCheckBox, QStyle::PE_IndicatorItemViewItemCheck })
                QVERIFY(added(element, Theme::Dark, isEnabled).startsWith(u"outlined square"_s));
            QCOMPARE(
                added(QStyle::PE_IndicatorRadioButton, Theme::Dark, isEnabled).section(u' ', -1),
                u"smooth"_s);
            QCOMPARE(added(QStyle::PE_FrameFocusRect, Theme::Dark, isEnabled), QString());
            QCOMPARE(added(QStyle::PE_IndicatorCheckBox, Theme::Light, isEnabled), QString());
        }
        for (const QString& name : { u"windows"_s, u"fusion"_s }) {
            QApplication::setStyle(name);
            outlineIndicators();
            QCOMPARE(dynamic_cast<OutlinedStyle*>(QApplication::style()) != nullptr,
                     name == u"fusion"_s);
        }
        QApplication::setStyle(u"fusion"_s);
    }

    /// Letters that are not marked, marked in the wrong colour, or that take the room of others.
    void marksLettersOfButtons()
    {
        QPushButton push;
        QCheckBox check;
        QRadioButton radio;
        QToolButton tool;
        QPixmap icon(16, 16);
        icon.fill(Qt::magenta);
        tool.setIcon(icon);
        tool.setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        QPalette palette = paletteOf(Theme::Light);
        palette.setColor(QPalette::ButtonText, Qt::blue);
        palette.setColor(QPalette::WindowText, Qt::green);
        palette.setColor(QPalette::Disabled, QPalette::ButtonText, Qt::gray);
        palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::gray);
        QFont font = push.font();
        font.setPixelSize(60);
        QFont bold = font;
        bold.setBold(true);
        const int wider = QFontMetrics(bold).horizontalAdvance(u'M')
            - QFontMetrics(font).horizontalAdvance(u'M');
        for (QAbstractButton* button :
             std::initializer_list<QAbstractButton*> { &push, &check, &radio, &tool }) {
            button->setFont(font);
            button->setPalette(palette);
            button->setText(u"Mm"_s);
            const int plain = button->sizeHint().width();
            setKeyLetter(button, u"x"_s, Qt::red);
            setKeyLetter(button, u"M"_s, {});
            QCOMPARE(keyLetterPosition(*button), -1);
            QCOMPARE(pixelsOf(grabOf(*button), Qt::red), 0);
            setKeyLetter(button, u"m"_s, Qt::red, Occurrence::LastInThisCase);
            QCOMPARE(keyLetterPosition(*button), 1);
            setKeyLetter(button, u"m"_s, Qt::red);
            QCOMPARE(keyLetterPosition(*button), 0);
            QVERIFY(button->sizeHint().width() >= plain + wider || button == &tool);
            const bool isButton = button == &push || button == &tool;
            QImage image = grabOf(*button);
            QVERIFY(pixelsOf(image, Qt::red) > 50);
            QVERIFY(pixelsOf(image, isButton ? Qt::blue : Qt::green) > 50);
            QCOMPARE(pixelsOf(image, isButton ? Qt::green : Qt::blue), 0);
            QCOMPARE(pixelsOf(image, Qt::magenta) > 50, button == &tool);
            for (const bool isMarked : { true, false }) { // of a disabled one the letter alone
                button->setEnabled(!isMarked);
                if (!isMarked)
                    button->setText(u"Ww"_s); // another title
                image = grabOf(*button);
                QCOMPARE(pixelsOf(image, Qt::red), 0);
                QVERIFY(pixelsOf(image,
                                 isMarked       ? Qt::gray
                                     : isButton ? Qt::blue
                                                : Qt::green)
                        > 50);
            }
        }
        tool.setText(u"Mm"_s);
        tool.setToolButtonStyle(Qt::ToolButtonTextOnly);
        QCOMPARE(pixelsOf(grabOf(tool), Qt::red), 0);
        QPushButton own(u"Mm"_s);
        own.setPalette(palette);
        setKeyLetter(&own, u"m"_s, Qt::blue); // the colour of its text follows that
        palette.setColor(QPalette::ButtonText, Qt::red);
        own.setPalette(palette);
        QCOMPARE(pixelsOf(grabOf(own), Qt::blue), 0);
    }

    /// Icons that are black on dark, full squares, or not there.
    void drawsIcons()
    {
        const QIcon program = applicationIcon();
        QCOMPARE(program.availableSizes().size(), 7);
        const QImage large = program.pixmap(QSize(256, 256)).toImage();
        QVERIFY(qAlpha(large.pixel(0, 0)) == 0 && qAlpha(large.pixel(128, 128)) == 255);
        QVERIFY(symbolicIcon(u"none"_s).isNull());
        QImage image(24, 24, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        symbolicIcon(u"status-done"_s)
            .paint(&painter, image.rect(), Qt::AlignCenter, QIcon::Selected);
        painter.end();
        QVERIFY(pixelsOf(image, QApplication::palette().color(QPalette::HighlightedText)) > 10);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    }

    /// A frame that is full or not there.
    void framesItsHint()
    {
        DropHint hint;
        QPalette palette;
        palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::red);
        hint.setPalette(palette);
        hint.setText(u"x"_s);
        const QImage image = grabOf(hint);
        QVERIFY(image.width() > 40);
        const QImage top = image.copy(0, 0, image.width(), 3);
        const int dashes = pixelsOf(top, Qt::red);
        QVERIFY(dashes > image.width() / 4 && dashes < 2 * image.width());
        QCOMPARE(pixelsOf(image.copy(6, 6, image.width() - 12, image.height() - 12), Qt::red), 0);
        int between = 0; // the corners are round and smooth
        for (int i = 0; i < 100; ++i)
            if (const QColor color = image.pixelColor(i % 10, i / 10);
                color.red() > color.green() && color.rgb() != qRgb(255, 0, 0))
                ++between;
        QVERIFY(between > 0);
    }

    /// A name that is cut without a way to read it, or whose blanks and marks are taken for markup.
    void elidesLongTexts()
    {
        ElidedLabel label;
        label.show();
        label.setFixedSize(80, 20);
        QCOMPARE(label.sizeHint().height(), label.minimumSizeHint().height());
        QVERIFY(label.minimumSizeHint().width() < label.sizeHint().width());
        const auto tip = [&] {
            QHelpEvent asked(QEvent::ToolTip, { 5, 5 }, label.mapToGlobal(QPoint(5, 5)));
            const bool isAnswered = QCoreApplication::sendEvent(&label, &asked);
            return isAnswered ? QToolTip::text() : u"that of what is around it"_s;
        };
        const QString text = u"<i>a name that is much too long for its place.tif"_s;
        label.setText(text);
        QVERIFY(label.shownText().startsWith(u"<i>"_s) && label.shownText().endsWith(u"f"_s)
                && label.shownText() != text);
        QVERIFY(tip().contains(u"&lt;i&gt;a"_s));
        QVERIFY(pixelsOf(label.grab().toImage(), label.palette().color(QPalette::Window))
                < 80 * 20);
        label.setToolTip(u"own"_s);
        QCOMPARE(tip(), u"own"_s);
        label.setToolTip({});
        label.setText(u"short"_s);
        tip();
        QTRY_COMPARE(QToolTip::text(), QString());
        QCOMPARE(label.textFormat(), Qt::PlainText);
        QCOMPARE(label.sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
    }

    /// Words that push others out of the window, or that stay away when there is room again.
    void showsWordsWhereThereIsRoom()
    {
        QWidget window;
        CommandBar bar(&window);
        auto* const row = new QHBoxLayout(&bar);
        QPixmap icon(16, 16);
        icon.fill(Qt::black);
        QList<QToolButton*> buttons;
        for (const QString& name : { u"One"_s, u"Another one"_s, u"Three"_s }) {
            buttons.append(new QToolButton);
            buttons.last()->setText(name);
            buttons.last()->setIcon(icon);
            row->addWidget(buttons.last());
            row->addWidget(new QLabel(u"|"_s));
        }
        const auto words = [&] {
            QString found;
            for (const auto* button : buttons)
                found += button->toolButtonStyle() == Qt::ToolButtonTextBesideIcon ? u'w' : u'-';
            return found;
        };
        window.show();
        const int least = bar.minimumSizeHint().width();
        bar.resize(2000, bar.height());
        QCOMPARE(words(), u"www"_s);
        QCOMPARE(bar.minimumSizeHint().width(), least);
        bar.resize(least, bar.height());
        QCOMPARE(words(), u"---"_s);
        int width = least;
        while (words() == u"---"_s && width < 2000)
            bar.resize(++width, bar.height());
        QCOMPARE(words(), u"w--"_s);
        QCOMPARE(bar.width(),
                 least + buttons.first()->sizeHint().width() - buttons.last()->sizeHint().width());
        QFont font = bar.font();
        font.setPixelSize(80);
        bar.setFont(font);
        QCOMPARE(words(), u"---"_s);
    }

    /// A page that is cut at its side, or has another ground than what it stands in.
    void takesTheWidthOfItsPage()
    {
        QWidget parent;
        auto* const row = new QHBoxLayout(&parent);
        auto* const page = new TallPage;
        row->addWidget(page);
        QVERIFY(page->sizeHint().isValid());
        auto* const content = new QWidget;
        auto* const column = new QHBoxLayout(content);
        page->setWidget(content);
        parent.show();
        QVERIFY(!content->autoFillBackground() && !page->viewport()->autoFillBackground());
        QCOMPARE(page->frameShape(), QFrame::NoFrame);
        QVERIFY(page->widgetResizable() && page->focusPolicy() == Qt::NoFocus);
        QCOMPARE(page->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        auto* const label = new QLabel;
        label->setFixedSize(400, 900);
        column->addWidget(label);
        QTRY_VERIFY(parent.width() >= 400 + page->verticalScrollBar()->sizeHint().width());
        QVERIFY(page->sizeHint().height() >= 900 && page->minimumSizeHint().height() < 300);
    }

    /// Colours that a theme leaves to the one before.
    void setsAllColoursOfATheme()
    {
        for (const Theme theme : { Theme::Light, Theme::Dark }) {
            const QPalette palette = paletteOf(theme);
            for (const auto group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled })
                for (int role = 0; role < QPalette::NColorRoles; ++role)
                    if (role != QPalette::NoRole)
                        QVERIFY2(palette.isBrushSet(group, static_cast<QPalette::ColorRole>(role)),
                                 qPrintable(QString::number(role)));
            QVERIFY(palette.color(QPalette::Light) != palette.color(QPalette::Dark));
            QVERIFY(palette.color(QPalette::PlaceholderText).alpha() < 255);
        }
        QVERIFY(!paletteOf(Theme::System).isBrushSet(QPalette::Active, QPalette::Window));
    }

    /// Questions whose icon says something else, or that Return answers by ending what is under
    /// way.
    void asksInTheStyleOfTheQuestion_data()
    {
        addTextRows({ "style", "icon", "default" }, R"(
            0 | 3 | Yes
            1 | 1 | Yes
            2 | 4 | Yes
            3 | 2 | No)");
    }

    void asksInTheStyleOfTheQuestion()
    {
        QFETCH(const QString, style);
        QWidget window;
        AlertPanel alerts;
        int answer = -1;
        alerts.ask(&window, static_cast<AlertPanel::Style>(style.toInt()), u"T"_s, u"Text"_s,
                   { u"Yes"_s, u"Maybe"_s, u"No"_s }, [&](int button) { answer = button; });
        const QPointer<QMessageBox> box = window.findChild<QMessageBox*>();
        QTEST(QString::number(box->icon()), "icon");
        QTEST(box->defaultButton()->text(), "default");
        QCOMPARE(box->text() + alerts.lastText() + alerts.lastTitle(), u"TextTextT"_s);
        box->done(0); // as when its window is closed
        QCOMPARE(answer, 2);
        QTRY_VERIFY(box.isNull());
        alerts.ask(&window, AlertPanel::Style::Critical, u"T"_s, u"Text"_s, {}, {});
        QCOMPARE(alerts.lastButtons(), QStringList(u"OK"_s));
        window.findChild<QMessageBox*>()->buttons().first()->click(); // nobody is told
        alerts.setNextAnswer(1);
        alerts.ask(&window, AlertPanel::Style::Critical, u"T"_s, u"Text"_s, {}, {});
        QCOMPARE(alerts.askedCount(), 3);
    }
};

} // namespace

QTEST_MAIN(WidgetsTest)
#include "WidgetsTest.moc"
