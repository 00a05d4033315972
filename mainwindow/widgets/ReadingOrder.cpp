#include "mainwindow/widgets/ReadingOrder.h"

#include <QLayout>
#include <QMainWindow>
#include <QScrollArea>
#include <QSplitter>
#include <QTabWidget>
#include <QToolBar>

namespace pagestack {

namespace {

    void collect(QWidget* widget, QList<QWidget*>& found);

    void collect(const QLayout* layout, QList<QWidget*>& found)
    {
        for (int i = 0; i < layout->count(); ++i) {
            QLayoutItem* item = layout->itemAt(i);
            if (item->layout() != nullptr)
                collect(item->layout(), found);
            else
                collect(item->widget(), found);
        }
    }

    void collectWindow(const QMainWindow& window, QList<QWidget*>& found)
    {
        for (const QToolBar* bar : window.findChildren<QToolBar*>(Qt::FindDirectChildrenOnly))
            for (QAction* action : bar->actions())
                collect(bar->widgetForAction(action), found);
        collect(window.centralWidget(), found);
    }

    void collect(QWidget* widget, QList<QWidget*>& found)
    {
        if (widget == nullptr)
            return;
        if (const auto* window = qobject_cast<QMainWindow*>(widget)) {
            collectWindow(*window, found);
        } else if (const auto* tabs = qobject_cast<QTabWidget*>(widget)) {
            found.append(widget); // hands the keys on to its bar
            for (int i = 0; i < tabs->count(); ++i)
                collect(tabs->widget(i), found);
        } else if (const auto* splitter = qobject_cast<QSplitter*>(widget)) {
            for (int i = 0; i < splitter->count(); ++i)
                collect(splitter->widget(i), found);
        } else if (const auto* area = qobject_cast<QScrollArea*>(widget)) {
            collect(area->widget(), found);
        } else if ((widget->focusPolicy() & Qt::TabFocus) != 0) {
            found.append(widget); // with what it consists of
        } else if (widget->layout() != nullptr) {
            collect(widget->layout(), found);
        }
    }

} // namespace

QList<QWidget*> controlsAsRead(QWidget& root)
{
    QList<QWidget*> found;
    collect(&root, found);
    return found;
}

void setTabOrder(const QList<QWidget*>& controls)
{
    for (qsizetype i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls.at(i - 1), controls.at(i));
}

} // namespace pagestack
