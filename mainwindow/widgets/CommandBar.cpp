#include "mainwindow/widgets/CommandBar.h"

#include <QEvent>
#include <QLayout>
#include <QToolButton>

namespace pagestack {

namespace {

    constexpr int iconGap = 4; // that QToolButton leaves before its text

    int widthOfWords(const QToolButton& button)
    {
        const QFontMetrics metrics = button.fontMetrics();
        return iconGap + metrics.size(Qt::TextShowMnemonic, button.text()).width()
            + 2 * metrics.horizontalAdvance(u' ');
    }

    bool hasWords(const QToolButton& button)
    {
        return button.toolButtonStyle() == Qt::ToolButtonTextBesideIcon;
    }

    int narrowest(const QLayoutItem& item)
    {
        const auto* button = qobject_cast<const QToolButton*>(item.widget());
        if (button == nullptr)
            return item.minimumSize().width();
        return button->sizeHint().width() - (hasWords(*button) ? widthOfWords(*button) : 0);
    }

} // namespace

int CommandBar::widthOfIcons() const
{
    const QMargins margins = layout()->contentsMargins();
    int width = margins.left() + margins.right() + layout()->spacing() * (layout()->count() - 1);
    for (int i = 0; i < layout()->count(); ++i)
        width += narrowest(*layout()->itemAt(i));
    return width;
}

QSize CommandBar::minimumSizeHint() const
{
    const QSize size = QWidget::minimumSizeHint();
    return layout() == nullptr ? size : QSize(widthOfIcons(), size.height());
}

void CommandBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showWords();
}

bool CommandBar::event(QEvent* event)
{
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange
        || event->type() == QEvent::LanguageChange)
        showWords();
    return isHandled;
}

void CommandBar::showWords()
{
    if (layout() == nullptr)
        return;
    int room = width() - widthOfIcons();
    for (int i = 0; i < layout()->count(); ++i) {
        auto* button = qobject_cast<QToolButton*>(layout()->itemAt(i)->widget());
        if (button == nullptr)
            continue;
        room -= widthOfWords(*button);
        // One that comes later never has words where an earlier one has none.
        button->setToolButtonStyle(room >= 0 ? Qt::ToolButtonTextBesideIcon
                                             : Qt::ToolButtonIconOnly);
    }
}

} // namespace pagestack
