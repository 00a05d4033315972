#include "mainwindow/widgets/KeyLetter.h"

#include "mainwindow/widgets/OutlinedStyle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeySequence>
#include <QPainter>
#include <QPointer>
#include <QStyleOptionButton>
#include <QTextLayout>
#include <QtMath>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr const char* keyLetterProperty = "keyLetter";
    constexpr int iconMargin = 3; // of a tool button

    struct KeyLetter
    {
        QString title;
        qsizetype position = -1;
        QColor color; ///< invalid: that of the text
    };

    /// The button's title on one line, the letter of `mark` bold and underlined.
    void layOut(QTextLayout& layout, const KeyLetter& mark, bool isEnabled)
    {
        QTextLayout::FormatRange letter { static_cast<int>(mark.position), 1, {} };
        letter.format.setFontWeight(QFont::Bold);
        letter.format.setFontUnderline(true);
        if (isEnabled && mark.color.isValid())
            letter.format.setForeground(mark.color);
        layout.setFormats({ letter });
        layout.beginLayout();
        layout.createLine().setLineWidth(QWIDGETSIZE_MAX);
        layout.endLayout();
    }

    /// The button of `widget` when its label is to be drawn here.
    const QAbstractButton* markedButton(const QWidget* widget)
    {
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        return button != nullptr && keyLetterPosition(*button) >= 0 ? button : nullptr;
    }

    /// The style of the program, but for the labels of buttons with a key letter.
    class KeyLetterStyle : public OutlinedStyle
    {
    public:
        void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                         const QWidget* widget) const override
        {
            const bool isPush = element == CE_PushButtonLabel;
            const QAbstractButton* button = markedButton(widget);
            const bool isTool = element == CE_ToolButtonLabel && hasIconBeside(option);
            if (button == nullptr
                || !(isPush || isTool || element == CE_CheckBoxLabel
                     || element == CE_RadioButtonLabel)) {
                QProxyStyle::drawControl(element, option, painter, widget);
                return;
            }
            QTextLayout layout(button->text(), button->font(), painter->device());
            layOut(layout, button->property(keyLetterProperty).value<KeyLetter>(),
                   button->isEnabled());
            const QTextLine line = layout.lineAt(0);
            const QSize size(qCeil(line.naturalTextWidth()), qCeil(line.height()));
            const QRect room = isTool ? afterIcon(option, painter) : option->rect;
            QRect area = alignedRect(option->direction, isPush ? Qt::AlignCenter : Qt::AlignVCenter,
                                     size, room);
            if ((isPush || isTool) && (option->state & (State_On | State_Sunken)) != 0)
                area.translate(pixelMetric(PM_ButtonShiftHorizontal, option, widget),
                               pixelMetric(PM_ButtonShiftVertical, option, widget));
            painter->setPen(option->palette.color(isPush || isTool ? QPalette::ButtonText
                                                                   : QPalette::WindowText));
            layout.draw(painter, area.topLeft());
        }

        QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                               const QWidget* widget) const override
        {
            QSize size = contents;
            if (const QAbstractButton* button = markedButton(widget)) {
                QTextLayout layout(button->text(), button->font());
                layOut(layout, button->property(keyLetterProperty).value<KeyLetter>(), false);
                const int plain = button->fontMetrics().horizontalAdvance(button->text());
                size.rwidth() += qMax(0, qCeil(layout.lineAt(0).naturalTextWidth()) - plain);
            }
            return QProxyStyle::sizeFromContents(type, option, size, widget);
        }

    private:
        static bool hasIconBeside(const QStyleOption* option)
        {
            const auto* tool = qstyleoption_cast<const QStyleOptionToolButton*>(option);
            return tool != nullptr && tool->toolButtonStyle == Qt::ToolButtonTextBesideIcon;
        }

        /// Draws the icon of a tool button, as the styles of Qt do, and returns the room that is
        /// left for its text.
        QRect afterIcon(const QStyleOption* option, QPainter* painter) const
        {
            const auto* tool = qstyleoption_cast<const QStyleOptionToolButton*>(option);
            const bool isRaised = (option->state & (State_MouseOver | State_Sunken)) != 0;
            const QIcon::Mode mode = (option->state & State_Enabled) == 0 ? QIcon::Disabled
                : isRaised                                                ? QIcon::Active
                                                                          : QIcon::Normal;
            const QSize size = tool->iconSize + QSize(2 * iconMargin, 0);
            const QRect icon = alignedRect(option->direction, Qt::AlignLeading | Qt::AlignVCenter,
                                           size, option->rect);
            proxy()->drawItemPixmap(
                painter, icon, Qt::AlignCenter,
                tool->icon.pixmap(tool->iconSize, painter->device()->devicePixelRatioF(), mode));
            const int width = option->rect.width() - size.width() - iconMargin;
            return alignedRect(option->direction, Qt::AlignTrailing | Qt::AlignVCenter,
                               { width, option->rect.height() }, option->rect);
        }
    };

    QStyle* keyLetterStyle()
    {
        static QPointer<KeyLetterStyle> style;
        if (style == nullptr) {
            style = new KeyLetterStyle;
            style->setParent(qApp);
        }
        return style;
    }

} // namespace

void setKeyLetter(QAbstractButton* button, const QString& key, const QColor& color,
                  Occurrence occurrence)
{
    if (button == nullptr || key.isEmpty() || !color.isValid())
        return;
    const QString title = button->text();
    const qsizetype position = occurrence == Occurrence::FirstInAnyCase
        ? title.indexOf(key, 0, Qt::CaseInsensitive)
        : title.lastIndexOf(key);
    if (position < 0)
        return;
    const bool isPlain
        = color == button->palette().color(QPalette::Active, button->foregroundRole());
    button->setProperty(
        keyLetterProperty,
        QVariant::fromValue(KeyLetter { title, position, isPlain ? QColor() : color }));
    button->setStyle(keyLetterStyle());
#ifndef Q_OS_MACOS
    button->setShortcut(QKeySequence(u"Alt+"_s + title.at(position).toUpper()));
#endif
}

qsizetype keyLetterPosition(const QAbstractButton& button)
{
    const auto mark = button.property(keyLetterProperty).value<KeyLetter>();
    return mark.title == button.text() ? mark.position : -1;
}

} // namespace pagestack
